// The view above the menu's items: what it says, also to assistive technology, and that it follows.
#include "app/StatusMenuView/StatusMenuView.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/StatusMenuView/HeaderView.h"
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/StatusMenuView/PathSection.h"
#include "app/StatusMenuView/StatsGridView.h"
#include "app/ViewStyle/ViewStyle.h"
#include "tests/app/StatusMenuView/DrawnView.h"
#include "tests/app/WatchedMonitor.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QImage>
#include <QPushButton>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;

class StatusMenuViewTest : public testing::Test, protected WatchedMonitor {
protected:
    [[nodiscard]] static QAccessibleInterface& accessible(QObject& object) {
        return *QAccessible::queryAccessibleInterface(&object);
    }

    [[nodiscard]] static std::vector<std::string> childNames(QObject& object) {
        std::vector<std::string> names;
        const QAccessibleInterface& interface = accessible(object);
        for (int index = 0; index < interface.childCount(); ++index) {
            names.push_back(interface.child(index)->text(QAccessible::Name).toStdString());
        }
        return names;
    }

    template<class View>
    [[nodiscard]] static View& part(const StatusMenuView& view) {
        for (QObject* child : view.children()) {
            if (auto* const found = dynamic_cast<View*>(child)) {
                return *found;
            }
        }
        throw std::logic_error("no such part");
    }
};

} // namespace

TEST_F(StatusMenuViewTest, ItIsThreeHundredAndTwentyPointsWideInTheUsualFont) {
    StatusMenuView view(monitor.observedReading(), loop, nullptr);
    QFont font = view.font();
    font.setPixelSize(13);
    view.setFont(font);

    EXPECT_EQ(view.sizeHint().width(), 320);
}

TEST_F(StatusMenuViewTest, ItGrowsWithTheUsersFont) {
    StatusMenuView view(monitor.observedReading(), loop, nullptr);
    QFont font = view.font();
    font.setPixelSize(13);
    view.setFont(font);
    const QSize usual = view.sizeHint();
    font.setPixelSize(26);
    view.setFont(font);

    EXPECT_GT(view.sizeHint().width(), usual.width() * 3 / 2);
    EXPECT_GT(view.sizeHint().height(), usual.height() * 3 / 2);
}

TEST_F(StatusMenuViewTest, TheVerdictStandsBelowTheHeaderWhileSomethingIsWrong) {
    Observed<Reading> reading;
    StatusMenuView view(reading, loop, nullptr);
    int changes = 0;
    view.onSizeChange = [&changes] { ++changes; };
    const int usual = view.sizeHint().height();
    const std::size_t parts = childNames(view).size();

    Reading bad;
    bad.verdict = {
        .blame = Blame::provider, .evidence = "Your router answers in 2 ms; nothing beyond it has answered."};
    reading.set(bad);
    loop.runPending();

    EXPECT_THAT(childNames(view), testing::Contains(bad.verdict->evidence));
    EXPECT_EQ(childNames(view)[1], bad.verdict->evidence);
    EXPECT_GT(view.sizeHint().height(), usual);
    EXPECT_EQ(changes, 1);

    reading.set(Reading{});
    loop.runPending();

    EXPECT_EQ(childNames(view).size(), parts);
    EXPECT_EQ(view.sizeHint().height(), usual);
    EXPECT_EQ(changes, 2);
}

TEST_F(StatusMenuViewTest, ThePathOpensBelowTheVerdict) {
    Observed<Reading> reading;
    StatusMenuView view(reading, loop, nullptr);
    int changes = 0;
    view.onSizeChange = [&changes] { ++changes; };
    EXPECT_FALSE(view.hasButtons());
    Reading bad;
    bad.verdict = {.blame = Blame::host, .evidence = "Only the host does not answer."};
    bad.path = {
        {.address = "192.0.2.1", .samples = {{.ms = 2}}},
        {.address = "203.0.113.9", .isHost = true, .samples = {{}}}};
    reading.set(bad);
    loop.runPending();
    ASSERT_EQ(childNames(view)[2], "Path");
    auto& section = part<PathSection>(view);
    auto* const button = section.findChild<QPushButton*>();
    ASSERT_NE(button, nullptr);
    EXPECT_TRUE(view.hasButtons());
    EXPECT_THAT(childNames(section), ElementsAre("Show Path"));
    const int closed = view.sizeHint().height();
    EXPECT_EQ(changes, 1);

    button->click();

    EXPECT_THAT(
        childNames(section),
        ElementsAre("Hide Path", "Hop 1, 192.0.2.1, 0% lost, 2 ms", "Hop 2, 203.0.113.9, 100% lost"));
    EXPECT_GT(view.sizeHint().height(), closed);
    EXPECT_EQ(changes, 2);

    bad.path.front().samples.push_back({});
    reading.set(bad);
    loop.runPending();
    EXPECT_EQ(childNames(section)[1], "Hop 1, 192.0.2.1, 50% lost, 2 ms");

    const int withoutName = view.sizeHint().height();
    bad.path.front().name = "router.example";
    reading.set(bad);
    loop.runPending();
    EXPECT_EQ(childNames(section)[1], "Hop 1, 192.0.2.1, router.example, 50% lost, 2 ms");
    EXPECT_GT(view.sizeHint().height(), withoutName);
    EXPECT_EQ(changes, 3);

    button->click();

    EXPECT_THAT(childNames(section), ElementsAre("Show Path"));
    EXPECT_EQ(view.sizeHint().height(), closed);
    EXPECT_EQ(changes, 4);
}

TEST_F(StatusMenuViewTest, PartsStandBelowEachOtherTwelvePointsApart) {
    StatusMenuView view(monitor.observedReading(), loop, nullptr);
    QFont font = view.font();
    font.setPixelSize(13);
    view.setFont(font);
    view.resize(view.sizeHint());
    view.ensurePolished();
    (void)view.grab(); // lays out

    const QRect header = part<HeaderView>(view).geometry();
    const QRect chart = part<LatencyChartView>(view).geometry();
    const QRect grid = part<StatsGridView>(view).geometry();
    EXPECT_EQ(header.topLeft(), QPoint(14, 8));
    EXPECT_EQ(header.width(), 320 - 28);
    EXPECT_EQ(chart.top() - header.bottom() - 1, 12);
    EXPECT_EQ(grid.top() - chart.bottom() - 1, 12);
    EXPECT_EQ(view.height() - grid.bottom() - 1, 6);
}

TEST_F(StatusMenuViewTest, BeforeTheFirstReplyItIsConnectingWithNoBarsAndADash) {
    fallSilent();
    watchFor(0.5);
    const StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_EQ(
        HeaderContent::of(monitor.reading()), (HeaderContent{
                                                  .bars = 0,
                                                  .tone = QualityTone::neutral,
                                                  .quality = "Connecting…",
                                                  .hostLine = "1.1.1.1",
                                                  .latency = "–",
                                              }));
    EXPECT_EQ(part<HeaderView>(view).accessibleName(), "Connecting…, 1.1.1.1, –");
}

TEST_F(StatusMenuViewTest, AfterRepliesItTellsQualityLatencyAndLoss) {
    watchFor(20.5);
    const StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_EQ(
        HeaderContent::of(monitor.reading()), (HeaderContent{
                                                  .bars = 5,
                                                  .tone = QualityTone::good,
                                                  .quality = "Excellent",
                                                  .hostLine = "1.1.1.1",
                                                  .latency = "20 ms",
                                                  .loss = "0% loss",
                                              }));
    EXPECT_EQ(part<HeaderView>(view).accessibleName(), "Excellent, 1.1.1.1, 20 ms, 0% loss");
}

TEST_F(StatusMenuViewTest, WhileDownItSaysWhyWithoutBarsOrLoss) {
    watchFor(20.5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    const StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_EQ(
        HeaderContent::of(monitor.reading()), (HeaderContent{
                                                  .bars = 0,
                                                  .tone = QualityTone::bad,
                                                  .quality = "Connection down",
                                                  .hostLine = "No replies for 8 s",
                                                  .latency = "Down",
                                                  .isDown = true,
                                                  .isLossy = true,
                                              }));
    EXPECT_EQ(part<HeaderView>(view).accessibleName(), "Connection down, No replies for 8 s, Down");
}

TEST_F(StatusMenuViewTest, ItFollowsTheMonitor) {
    watchFor(20.5);
    const StatusMenuView view(monitor.observedReading(), loop, nullptr);
    answerAfter(0.25);
    loop.advance(2);

    EXPECT_EQ(part<HeaderView>(view).accessibleName(), "Excellent, 1.1.1.1, 250 ms, 0% loss");
    EXPECT_EQ(
        part<LatencyChartView>(view).accessibleName(),
        "Median 20 milliseconds, slowest 250 milliseconds, 0 lost");
}

TEST_F(StatusMenuViewTest, ItNoLongerFollowsOnceToldSo) {
    watchFor(20.5);
    StatusMenuView view(monitor.observedReading(), loop, nullptr);
    view.stopFollowing();
    answerAfter(0.25);
    loop.advance(5);

    EXPECT_EQ(part<HeaderView>(view).accessibleName(), "Excellent, 1.1.1.1, 20 ms, 0% loss");
}

TEST_F(StatusMenuViewTest, ItCanGoWhileAChangeIsOnItsWay) {
    watchFor(20.5);
    auto view = std::make_unique<StatusMenuView>(monitor.observedReading(), loop, nullptr);
    monitor.resetSessionStats();
    view.reset();
    loop.advance(1);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
}

TEST_F(StatusMenuViewTest, ItKeepsNoTimer) {
    watchFor(20.5);
    const std::size_t before = loop.timerCount();
    const StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_EQ(loop.timerCount(), before);
}

TEST_F(StatusMenuViewTest, AssistiveTechnologySeesHeaderChartAndStatistics) {
    watchFor(20.5);
    StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_THAT(
        childNames(view), ElementsAre(
                              "Excellent, 1.1.1.1, 20 ms, 0% loss",
                              "Median 20 milliseconds, slowest 20 milliseconds, 0 lost", "Statistics"));
    EXPECT_EQ(accessible(view).child(0)->role(), QAccessible::StaticText);
    EXPECT_EQ(accessible(view).child(1)->role(), QAccessible::Chart);
    EXPECT_EQ(accessible(view).child(2)->role(), QAccessible::Grouping);
}

TEST_F(StatusMenuViewTest, HeaderAndChartAreOneElementEach) {
    watchFor(20.5);
    StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_EQ(accessible(part<HeaderView>(view)).childCount(), 0);
    EXPECT_EQ(accessible(part<LatencyChartView>(view)).childCount(), 0);
}

TEST_F(StatusMenuViewTest, EachRowOfStatisticsIsOneElement) {
    watchFor(3.5);
    StatusMenuView view(monitor.observedReading(), loop, nullptr);

    EXPECT_THAT(
        childNames(part<StatsGridView>(view)),
        ElementsAre(
            "Pings sent: session 4, all time 4", "Replies lost: session 0, all time 0",
            "Packet loss: session 0%, all time 0%", "Average: session 20.0 ms, all time 20.0 ms",
            "Fastest: session 20.0 ms, all time 20.0 ms", "Slowest: session 20.0 ms, all time 20.0 ms"));
}

TEST_F(StatusMenuViewTest, FiguresThatOutgrowTheirColumnPushItWider) {
    StatsGridView grid(nullptr);
    grid.resize(292, grid.sizeHint().height());
    const auto firstInk = [&](std::int64_t sent) {
        grid.setRows(StatsGrid::rows({.sent = 1}, {.sent = sent}, {}));
        QImage image(grid.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        grid.render(&image, {}, {}, QWidget::DrawChildren);
        // The second row: its figures are 0 in both columns; the session's one ends where its column does.
        const int y = image.height() * 5 / 14;
        int rightmost = 0;
        for (int x = 0; x < 270; ++x) {
            for (int row = y - 3; row <= y + 3; ++row) {
                rightmost = qAlpha(image.pixel(x, row)) > 40 ? x : rightmost;
            }
        }
        return rightmost;
    };

    EXPECT_LT(firstInk(1'000'000'000'000'000), firstInk(1) - 10);
}

TEST_F(StatusMenuViewTest, TheColumnsOfTheGridHaveTheirTitles) {
    StatsGridView grid(nullptr);
    grid.setPalette(test::paperPalette());
    grid.resize(292, grid.sizeHint().height());
    const ViewStyle style(grid);
    const QFont font = style.font(11);
    QImage expected = test::blankImage(grid.size());
    QPainter painter(&expected);
    painter.setPen(style.colors().secondary());
    const auto drawTitle = [&](const QString& title, double right) {
        const TabularLine line(font, title);
        line.draw(painter, {right - line.width(), std::round(QFontMetricsF(font).ascent())});
    };
    drawTitle("Session", 292 - style.length(72) - style.length(12));
    drawTitle("All Time", 292);
    painter.end();

    const QRect place(0, 0, 292, static_cast<int>(std::ceil(QFontMetricsF(font).height())));
    EXPECT_EQ(test::drawn(grid).copy(place), expected.copy(place));
}

} // namespace tarnwick
