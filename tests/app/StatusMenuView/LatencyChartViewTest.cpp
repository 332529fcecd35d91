// Where the chart's bars stand, and what they look like.
#include "app/StatusMenuView/LatencyChartView.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"
#include "tests/app/StatusMenuView/DrawnView.h"

#include <QFontMetricsF>
#include <QImage>

#include <cmath>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using LatencyChart::Bucket;
using LatencyChart::ChartBar;
using LatencyChart::ChartLayout;

constexpr double low = 100;
constexpr double high = 1000;
constexpr QSizeF chartSize{292, 64};

Bucket reply(double ms) {
    return {.worstRtt = ms};
}

Bucket loss() {
    return {.lost = true};
}

LatencyChart::Chart chartOf(std::vector<Bucket> buckets) {
    return {.buckets = std::move(buckets), .lowThresholdMs = low, .highThresholdMs = high};
}

ChartLayout layout(const std::vector<Bucket>& buckets) {
    return LatencyChart::layout(chartOf(buckets), chartSize, 1);
}

std::vector<Bucket> replies(std::size_t count, double ms) {
    return std::vector(count, reply(ms));
}

class ChartAtScale : public testing::TestWithParam<double> {};

INSTANTIATE_TEST_SUITE_P(Screens, ChartAtScale, testing::Values(1, 1.25, 1.5, 2, 3));

} // namespace

TEST(LatencyChartLayout, EveryPingIntervalFillsTheWidthWithItsBuckets) {
    for (const auto& [interval, count] : {std::pair{1.0, 36U}, std::pair{10.0, 30U}, std::pair{60.0, 5U}}) {
        std::vector<Bucket> buckets = LatencyChart::buckets({}, RunLoop::WallTime{}, interval);
        ASSERT_EQ(buckets.size(), count);
        buckets.front().worstRtt = 10;
        buckets.back().worstRtt = 10;

        const ChartLayout chart = layout(buckets);

        ASSERT_EQ(chart.bars.size(), count);
        EXPECT_EQ(chart.bars.front().rect.left(), 0);
        EXPECT_EQ(chart.bars.back().rect.right(), 292);
    }
}

TEST_P(ChartAtScale, SidesOfBarsLieOnWholePixelsOnePointApart) {
    const double scale = GetParam();
    const ChartLayout chart = LatencyChart::layout(chartOf(replies(36, 50)), chartSize, scale);

    for (std::size_t index = 0; index < chart.bars.size(); ++index) {
        const double left = chart.bars[index].rect.left() * scale;
        EXPECT_NEAR(left, std::round(left), 1e-9);
        if (index > 0) {
            EXPECT_NEAR(chart.bars[index].rect.left() - chart.bars[index - 1].rect.right(), 1, 1e-9);
        }
    }
}

TEST(LatencyChartLayout, HeightsFollowTheScale) {
    const ChartLayout chart = layout({reply(100), reply(50), reply(25)});

    // The worst times 1.25 is the top of the scale here.
    EXPECT_NEAR(chart.bars[0].rect.height(), 64 * 100 / 125.0, 1e-9);
    EXPECT_NEAR(chart.bars[1].rect.height(), 64 * 50 / 125.0, 1e-9);
    EXPECT_NEAR(chart.bars[2].rect.height(), 64 * 25 / 125.0, 1e-9);
    EXPECT_EQ(chart.bars[2].rect.bottom(), 64);
}

TEST(LatencyChartLayout, AVeryFastPingIsStillSeen) {
    EXPECT_EQ(layout({reply(0.01)}).bars[0].rect.height(), 3);
}

TEST(LatencyChartLayout, AnOutlierIsClippedWithANotchInItsTop) {
    std::vector<Bucket> buckets = replies(36, 40);
    buckets[10] = reply(900);

    const ChartBar bar = layout(buckets).bars[10];

    EXPECT_TRUE(bar.isClipped);
    EXPECT_EQ(bar.rect.height(), 64);
    EXPECT_FALSE(bar.path().contains(QPointF(bar.rect.center().x(), 1)));
    EXPECT_TRUE(bar.path().contains(QPointF(bar.rect.center().x(), 5)));
    EXPECT_FALSE(layout(buckets).bars[11].isClipped);
}

TEST(LatencyChartLayout, NothingButLossesIsAWall) {
    const ChartBar bar = layout({reply(20), loss()}).bars[1];

    EXPECT_EQ(bar.tone, LatencyChart::BarTone::outage);
    EXPECT_EQ(bar.rect.height(), 64);
    EXPECT_FALSE(bar.isClipped);
}

TEST(LatencyChartLayout, ALossBesideAReplyReddensTheReplysBar) {
    const ChartBar bar = layout({reply(20), {.worstRtt = 20, .lost = true}}).bars[1];

    EXPECT_EQ(bar.tone, LatencyChart::BarTone::bad);
    EXPECT_LT(bar.rect.height(), 64);
}

TEST(LatencyChartLayout, ALossBesideAReplyIsSeenWithoutColorToo) {
    const auto hasInk = [](const ChartBar& bar, double aboveBar) {
        return bar.path().contains(QPointF(bar.rect.center().x(), bar.rect.top() - aboveBar));
    };
    const ChartLayout chart =
        layout({reply(20), {.worstRtt = 20, .lost = true}, {.worstRtt = 100, .lost = true}, reply(100)});

    EXPECT_FALSE(hasInk(chart.bars[0], 3.5));
    EXPECT_TRUE(hasInk(chart.bars[1], 3.5));
    EXPECT_FALSE(hasInk(chart.bars[1], 1));
    EXPECT_TRUE(hasInk(chart.bars[1], -1));
}

TEST(LatencyChartLayout, ALossBesideAReplyAsHighAsTheChartCutsItsTopOff) {
    std::vector<Bucket> buckets = replies(36, 40);
    buckets[10] = {.worstRtt = 900, .lost = true};
    const ChartBar bar = layout(buckets).bars[10];
    const auto hasInk = [&bar](double y) { return bar.path().contains(QPointF(bar.rect.center().x(), y)); };

    EXPECT_EQ(bar.rect.top(), 0);
    EXPECT_TRUE(hasInk(1.5));
    EXPECT_FALSE(hasInk(4));
    EXPECT_TRUE(hasInk(7));
}

TEST(LatencyChartLayout, AnEmptyBucketKeepsItsSlot) {
    const ChartLayout chart = layout({reply(20), Bucket{}, reply(20)});

    EXPECT_TRUE(chart.bars[1].rect.isEmpty());
    EXPECT_NEAR(chart.bars[2].rect.left(), 195, 1);
}

TEST(LatencyChartLayout, TheThresholdLineFollowsTheScaleOfTheBars) {
    const ChartLayout chart = layout({reply(100), reply(50)});

    ASSERT_TRUE(chart.threshold.has_value());
    EXPECT_NEAR(*chart.threshold, chart.bars[0].rect.top(), 1e-9);
}

TEST(LatencyChartLayout, AThresholdFarAboveTheDataHasNoLine) {
    EXPECT_EQ(layout(replies(20, 10)).threshold, std::nullopt);
}

TEST(LatencyChartLayout, AThresholdOfNothingIsSurvived) {
    const ChartLayout chart = LatencyChart::layout({.buckets = {reply(0)}}, chartSize, 1);
    const ChartLayout empty = LatencyChart::layout(
        {.buckets = {Bucket{}}, .lowThresholdMs = -100, .highThresholdMs = -100}, chartSize, 1);

    EXPECT_TRUE(std::isfinite(chart.bars[0].rect.height()));
    EXPECT_EQ(empty.threshold, std::nullopt);
}

namespace {

/// The chart as it is seen, on white.
class LatencyChartViewTest : public testing::Test {
protected:
    LatencyChartViewTest() {
        view.setPalette(test::paperPalette());
        view.resize(292, view.sizeHint().height());
    }

    /// Two reply buckets and one with the given content, each 97 points wide.
    [[nodiscard]] QImage draw(const Bucket& last) {
        view.setChart(chartOf({reply(40), reply(40), last}));
        return test::drawn(view);
    }

    LatencyChartView view{nullptr};
    LatencyPalette colors{test::paperPalette()};
};

} // namespace

TEST_F(LatencyChartViewTest, BarsHaveTheColorsOfTheirLatencies) {
    EXPECT_EQ(draw(reply(90)).pixel(240, 60), colors.good().rgb());
    EXPECT_EQ(draw(reply(400)).pixel(240, 60), colors.warn().rgb());
    EXPECT_EQ(draw(reply(800)).pixel(240, 60), colors.bad().rgb());
    EXPECT_EQ(draw({}).pixelColor(240, 60), QColor(Qt::white));
}

TEST_F(LatencyChartViewTest, AnOutageIsAWallUpToTheTopLighterThanABar) {
    const QColor wall = draw(loss()).pixelColor(240, 2);

    const auto blended = [](int part) { return 0.85 * part + 0.15 * 255; };
    EXPECT_NEAR(wall.red(), blended(colors.bad().red()), 2);
    EXPECT_NEAR(wall.green(), blended(colors.bad().green()), 2);
    EXPECT_NEAR(wall.blue(), blended(colors.bad().blue()), 2);
}

TEST_F(LatencyChartViewTest, ABarIsAsHighInPixelsAsItsLayoutSays) {
    const QImage image = draw(reply(90));
    const ChartLayout chart = layout({reply(40), reply(40), reply(90)});

    int colored = 0;
    for (int y = 0; y < 64; ++y) {
        colored += image.pixelColor(240, y).saturation() > 100 ? 1 : 0;
    }
    EXPECT_NEAR(colored, chart.bars[2].rect.height(), 1);
}

TEST_F(LatencyChartViewTest, TheThresholdIsADashedLineOnePixelHigh) {
    const QImage image = draw({}); // its slot shows the line on the bare ground
    const double line = layout({reply(40), reply(40), Bucket{}}).threshold.value_or(-1);
    ASSERT_GT(line, 0);
    const int row = static_cast<int>(line);

    int inked = 0;
    for (int x = 200; x < 290; ++x) {
        inked += image.pixelColor(x, row).lightness() < 220 ? 1 : 0;
        EXPECT_EQ(image.pixelColor(x, row - 1), QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(x, row + 1), QColor(Qt::white));
    }
    EXPECT_NEAR(inked, 45, 10);
}

TEST_F(LatencyChartViewTest, ItIsReadAloudAsOneSummary) {
    view.setChart(chartOf({reply(20), reply(40), loss()}));

    EXPECT_EQ(view.accessibleName(), "Median 40 milliseconds, slowest 40 milliseconds, 1 lost");
}

TEST_F(LatencyChartViewTest, TheCaptionStandsTenPointsBelowTheBars) {
    EXPECT_EQ(view.chartHeight(), 64);
    const QImage image = draw(reply(90));

    for (int y = 65; y < 73; ++y) {
        EXPECT_EQ(image.pixelColor(20, y), QColor(Qt::white)) << y;
    }
    int inked = 0;
    for (int y = 74; y < image.height(); ++y) {
        for (int x = 0; x < 80; ++x) {
            inked += image.pixelColor(x, y).lightness() < 200 ? 1 : 0;
        }
    }
    EXPECT_GT(inked, 50);
}

TEST_F(LatencyChartViewTest, TheCaptionEndsWithTheThreshold) {
    const QImage image = draw(reply(90));
    const ViewStyle style(view);
    const QFont font = style.font(11);
    const TabularLine text(font, "slow above 100 ms");
    const int left = static_cast<int>(std::floor(view.width() - text.width()));
    const double baseline = view.chartHeight() + style.length(10) + std::round(QFontMetricsF(font).ascent());
    QImage expected = test::blankImage(view.size());
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(style.colors().secondary());
    text.draw(painter, {static_cast<double>(left), baseline});
    painter.end();

    const QRect place(
        left, view.chartHeight() + 1, view.width() - left, view.height() - view.chartHeight() - 1);
    EXPECT_EQ(image.copy(place), expected.copy(place));
}

} // namespace tarnwick
