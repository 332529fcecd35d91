// The calendar of the outages window: keys, what is read aloud, what is drawn.
#include "app/OutagesView/DayStrip.h"

#include "app/ViewStyle/LatencyPalette.h"
#include "tests/app/OutagesView/OutagesForm.h"
#include "tests/app/StatusMenuView/DrawnView.h"
#include "tests/support/CaseName.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tarnwick {

namespace {

using testing::HasSubstr;

class DayStripTest : public testing::Test, protected test::OutagesForm {
protected:
    DayStripTest() { addOutages(); }

    [[nodiscard]] std::size_t chosen() {
        const auto all = days();
        const auto found = std::ranges::find_if(all, [](const auto* day) { return day->isChecked(); });
        return static_cast<std::size_t>(found - all.begin());
    }

    [[nodiscard]] QImage drawnDay(std::size_t day) const {
        QWidget& button = *days().at(day);
        button.setPalette(test::paperPalette());
        return test::drawn(button);
    }

    /// How many rows of pixels its column has.
    [[nodiscard]] int heightOf(std::size_t day) const {
        const QImage image = drawnDay(day);
        int rows = 0;
        for (int y = 0; y < image.height(); ++y) {
            rows += image.pixelColor(image.width() / 2, y) != QColor(Qt::white) ? 1 : 0;
        }
        return rows;
    }
};

struct DayStep {
    std::string name;
    std::size_t from;
    Qt::Key key;
    std::size_t to;
};

class DayStripKeys : public DayStripTest, public testing::WithParamInterface<DayStep> {};

} // namespace

TEST_P(DayStripKeys, LeadToAnotherDay) {
    present();
    days().at(GetParam().from)->click();
    days().at(GetParam().from)->setFocus();
    press(GetParam().key);

    EXPECT_EQ(chosen(), GetParam().to);
    EXPECT_TRUE(days().at(GetParam().to)->hasFocus());
    EXPECT_EQ(window.model().chosenDay(), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    DayStripTest, DayStripKeys,
    testing::Values(
        DayStep{"Left", 50, Qt::Key_Left, 49}, DayStep{"Right", 50, Qt::Key_Right, 51},
        DayStep{"PageUp", 50, Qt::Key_PageUp, 43}, DayStep{"PageDown", 50, Qt::Key_PageDown, 57},
        DayStep{"Home", 50, Qt::Key_Home, 0}, DayStep{"End", 50, Qt::Key_End, 89},
        DayStep{"LeftStopsAtTheFirst", 0, Qt::Key_Left, 0},
        DayStep{"RightStopsAtTheLast", 89, Qt::Key_Right, 89},
        DayStep{"PageUpStopsAtTheFirst", 3, Qt::Key_PageUp, 0},
        DayStep{"PageDownStopsAtTheLast", 87, Qt::Key_PageDown, 89},
        DayStep{"UpDoesNothing", 50, Qt::Key_Up, 50}, DayStep{"DownDoesNothing", 50, Qt::Key_Down, 50}),
    test::caseName);

TEST_F(DayStripTest, AClickAnywhereInItsColumnChoosesADay) {
    present();
    QAbstractButton& monday = *days().at(today - 2);
    QTest::mouseClick(&monday, Qt::LeftButton, Qt::NoModifier, QPoint(monday.width() / 2, 1));

    EXPECT_EQ(window.model().chosenDay(), today - 2);
}

TEST_F(DayStripTest, EachDayTellsWhenAndHowItWas) {
    present();
    QAbstractButton& monday = *days().at(today - 2);
    const QString text = "Monday, 2026-01-05: 99.305% available, 1 outage, down for 10 min";

    EXPECT_EQ(monday.toolTip(), text);
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&monday);
    EXPECT_EQ(seen->role(), QAccessible::RadioButton);
    EXPECT_EQ(seen->text(QAccessible::Name), text);
    EXPECT_FALSE(seen->state().checked);
    QAccessibleInterface* const group = QAccessible::queryAccessibleInterface(&strip());
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(group->childCount(), 90);
}

TEST_F(DayStripTest, AssistiveTechnologyChoosesADay) {
    present();
    QAbstractButton& monday = *days().at(today - 2);
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&monday);
    seen->actionInterface()->doAction(seen->actionInterface()->actionNames().front());
    const QDeadlineTimer deadline(10'000);
    while (!monday.isChecked() && !deadline.hasExpired()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    EXPECT_EQ(window.model().chosenDay(), today - 2);
    EXPECT_THAT(texts(), HasSubstr("\nMonday, 2026-01-05\n"));
}

TEST_F(DayStripTest, TheWorseADayWasTheHigherIsItsColumn) {
    history.episodes[2].kind = Episode::Kind::degradation;
    present();
    const int down = heightOf(today - 2);
    const int poor = heightOf(today - 1);
    const int good = heightOf(today);
    const int unknown = heightOf(today - 3);

    EXPECT_GT(down, poor + 5);
    EXPECT_GT(poor, good + 5);
    EXPECT_GT(good, unknown + 5);
    EXPECT_GT(unknown, 0);
}

TEST_F(DayStripTest, EachColumnHasTheColorOfItsDay) {
    history.episodes[2].kind = Episode::Kind::degradation;
    present();
    const LatencyPalette colors(test::paperPalette());
    const auto isDrawn = [this](std::size_t day, const QColor& color) {
        const QImage image = drawnDay(day);
        return test::hasColor(image, image.rect(), color);
    };

    EXPECT_TRUE(isDrawn(today - 2, colors.bad()));
    EXPECT_TRUE(isDrawn(today - 1, colors.warn()));
    EXPECT_TRUE(isDrawn(today, colors.good()));
    EXPECT_FALSE(isDrawn(today - 3, colors.good()));
}

TEST_F(DayStripTest, ColumnsStandApartAndClearOfTheMarkersEdge) {
    present();
    const QImage image = drawnDay(today - 2); // as high as a column can be
    const QPoint middle = image.rect().center();

    EXPECT_NE(image.pixelColor(middle), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(0, middle.y()), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(image.width() - 1, middle.y()), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(middle.x(), 2), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(middle.x(), image.height() - 3), QColor(Qt::white));
}

TEST_F(DayStripTest, TheDayBelowThePointerHasAGround) {
    present();
    QAbstractButton& sunday = *days().at(today - 3);
    const auto ground = [&] { return drawnDay(today - 3).pixelColor(0, 2); };
    ASSERT_EQ(ground(), QColor(Qt::white));
    QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(1, 1));
    QApplication::sendEvent(&sunday, &enter);
    EXPECT_NE(ground(), QColor(Qt::white));

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&sunday, &leave);
    EXPECT_EQ(ground(), QColor(Qt::white));
}

TEST_F(DayStripTest, TheKeyboardStaysAtItsDayOverMidnight) {
    present();
    press(Qt::Key_Left);
    ASSERT_THAT(focused(), HasSubstr("Tuesday, 2026-01-06"));
    loop.advance(12 * 3600 + 61);
    settle();

    EXPECT_EQ(window.model().chosenDay(), today - 2);
    EXPECT_THAT(focused(), HasSubstr("Tuesday, 2026-01-06"));
}

TEST_F(DayStripTest, ColumnsShareTheWholeWidth) {
    present();
    strip().resize(1001, strip().height());
    const auto all = days();

    EXPECT_EQ(all.front()->x(), 0);
    EXPECT_EQ(all.back()->geometry().right(), 1000);
    for (std::size_t day = 1; day < all.size(); ++day) {
        EXPECT_EQ(all[day]->x(), all[day - 1]->geometry().right() + 1);
    }
}

} // namespace tarnwick
