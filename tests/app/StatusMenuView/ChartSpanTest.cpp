// The switch below the chart: what it shows, what leads to it, and when the past is read for it.
#include "app/HistoryChartView/HistoryChartView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/ReachSwitch.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/StatusMenuView/StatusMenuView.h"
#include "tests/app/StatusMenuView/DropDownTest.h"
#include "tests/support/CaseName.h"

#include <QAccessible>
#include <QRadioButton>

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// Of the spans that were read.
struct ReadPast {
    std::vector<Span> spans;

    [[nodiscard]] PastSource source() {
        return {
            .read =
                [this](const Span& span) {
                    spans.push_back(span);
                    History history{.until = span.to};
                    history.periods.push_back({.start = span.from, .figures = {.sent = 1}});
                    history.periods.back().figures.addAnswer(30);
                    return history;
                },
            .whyEmpty = [] { return ""; },
            .offset = [](HistoryTime) { return std::chrono::seconds(0); }};
    }
};

class ChartSpanTest : private ReadPast, public DropDownTest {
protected:
    ChartSpanTest() : DropDownTest(source()) {
        loop.setWallClock(std::chrono::sys_days(std::chrono::year(2026) / 11 / 23));
        watchFor(20.5);
    }

    template<class View>
    [[nodiscard]] View* shown() const {
        for (QObject* const object : dropDown.window()->findChildren<QObject*>()) {
            auto* const view = dynamic_cast<View*>(object);
            if (view != nullptr && !view->isHidden()) {
                return view;
            }
        }
        return nullptr;
    }

    [[nodiscard]] std::string chartName() const {
        if (const auto* const past = shown<HistoryChartView>()) {
            return past->accessibleName().toStdString();
        }
        return shown<LatencyChartView>()->accessibleName().toStdString();
    }

    [[nodiscard]] std::vector<QRadioButton*> segments() const {
        const auto found = dropDown.window()->findChildren<QRadioButton*>();
        return {found.begin(), found.end()};
    }

    [[nodiscard]] std::string chosen() const {
        std::string names;
        for (const QRadioButton* const segment : segments()) {
            names += segment->isChecked() ? segment->text().toStdString() : "";
        }
        return names;
    }

    [[nodiscard]] std::string focused() const {
        const QWidget* const widget = dropDown.window()->focusWidget();
        const auto* const button = dynamic_cast<const QAbstractButton*>(widget);
        return button != nullptr ? button->text().toStdString() : widget->accessibleName().toStdString();
    }

    [[nodiscard]] const std::vector<Span>& reads() const { return spans; }
};

constexpr const char* fiveMinutes = "Median 20 milliseconds, slowest 20 milliseconds, 0 lost";

} // namespace

TEST_F(ChartSpanTest, FiveMinutesAreShownAtFirst) {
    open();

    EXPECT_EQ(chosen(), "5 min");
    EXPECT_EQ(chartName(), fiveMinutes);
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(ChartSpanTest, TheSwitchHasARadioButtonForEachSpan) {
    open();
    std::vector<std::string> names;
    for (QRadioButton* const segment : segments()) {
        names.push_back(segment->text().toStdString());
        EXPECT_EQ(QAccessible::queryAccessibleInterface(segment)->role(), QAccessible::RadioButton);
    }

    EXPECT_THAT(names, ElementsAre("5 min", "1 hour", "1 day", "1 week"));
    EXPECT_EQ(shown<ReachSwitch>()->accessibleName(), "Chart");
}

TEST_F(ChartSpanTest, AClickShowsALongerSpanInTheSamePlace) {
    open();
    const QSize before = dropDown.window()->size();
    const QRect place = shown<LatencyChartView>()->geometry();
    segments()[2]->click();

    EXPECT_THAT(chartName(), StartsWith("Last 24 hours, median 30 milliseconds"));
    EXPECT_EQ(chosen(), "1 day");
    EXPECT_EQ(shown<LatencyChartView>(), nullptr);
    EXPECT_EQ(shown<HistoryChartView>()->geometry(), place);
    EXPECT_EQ(dropDown.window()->size(), before);

    segments()[0]->click();

    EXPECT_EQ(chartName(), fiveMinutes);
    EXPECT_EQ(shown<HistoryChartView>(), nullptr);
    EXPECT_EQ(shown<LatencyChartView>()->geometry(), place);
}

TEST_F(ChartSpanTest, APressInTheMiddleOfASegmentChoosesIt) {
    open();
    QRadioButton* const segment = segments()[3];
    const QPointF right(segment->width() - 2, segment->height() - 2);
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(
            type, right, segment->mapToGlobal(right), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(segment, &event);
    }

    EXPECT_EQ(chosen(), "1 week");
}

TEST_F(ChartSpanTest, DigitsChooseFromAnywhere) {
    open();
    press(Qt::Key_2);
    EXPECT_THAT(chartName(), StartsWith("Last hour"));
    EXPECT_EQ(chosen(), "1 hour");
    press(Qt::Key_Down); // to an item of the menu
    press(Qt::Key_3);
    EXPECT_THAT(chartName(), StartsWith("Last 24 hours"));
    press(Qt::Key_4);
    EXPECT_THAT(chartName(), StartsWith("Last 7 days"));
    press(Qt::Key_5);
    press(Qt::Key_0);
    EXPECT_EQ(chosen(), "1 week");
    press(Qt::Key_1);
    EXPECT_EQ(chartName(), fiveMinutes);
    EXPECT_THAT(reads(), SizeIs(3));
}

TEST_F(ChartSpanTest, TabReachesTheSwitchThenTheItems) {
    open();
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "5 min");
    press(Qt::Key_Right);
    EXPECT_EQ(chosen(), "1 hour");
    EXPECT_EQ(focused(), "1 hour");
    press(Qt::Key_Left);
    EXPECT_EQ(chosen(), "5 min");
    press(Qt::Key_Tab);
    EXPECT_EQ(highlighted(), "Reset Session Stats");
    press(Qt::ShiftModifier | Qt::Key_Backtab);
    EXPECT_EQ(focused(), "5 min");
    press(Qt::Key_Down);
    EXPECT_EQ(highlighted(), "Reset Session Stats");
}

TEST_F(ChartSpanTest, TabReachesAChartOfTheParts) {
    open();
    press(Qt::Key_2);
    press(Qt::Key_Tab);
    ASSERT_TRUE(shown<HistoryChartView>()->hasFocus());
    press(Qt::Key_Left);

    EXPECT_THAT(
        shown<HistoryChartView>()->accessibleDescription().toStdString(), "Sun 23:59 to 24:00: no data");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "1 hour");
}

TEST_F(ChartSpanTest, TheChoiceIsKeptWhileItIsClosed) {
    open();
    press(Qt::Key_4);
    dropDown.close();
    open();

    EXPECT_EQ(chosen(), "1 week");
    EXPECT_THAT(chartName(), StartsWith("Last 7 days"));
}

TEST_F(ChartSpanTest, ThePastIsReadOnceAMinuteAndOnlyWhileItIsOpen) {
    open();
    press(Qt::Key_3);
    EXPECT_THAT(reads(), SizeIs(1));
    loop.advance(180);
    EXPECT_THAT(reads(), SizeIs(4));

    dropDown.close();
    loop.advance(600);
    EXPECT_THAT(reads(), SizeIs(4));

    open();
    EXPECT_THAT(reads(), SizeIs(5));
}

TEST_F(ChartSpanTest, NothingIsReadForFiveMinutes) {
    open();
    loop.advance(600);

    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(ChartSpanTest, WithoutThePastThereIsNoSwitch) {
    DropDown plain(monitor.observedReading(), menu.menu, loop);
    plain.open(click);

    EXPECT_THAT(plain.window()->findChildren<QRadioButton*>(), IsEmpty());
    plain.close();
}

} // namespace tarnwick
