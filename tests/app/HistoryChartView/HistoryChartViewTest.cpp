// The chart of a longer span: where its columns stand, what it draws, and what it tells of each.
#include "app/HistoryChartView/HistoryChartView.h"

#include "app/ViewStyle/ViewStyle.h"
#include "tests/app/StatusMenuView/DrawnView.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using HistoryChart::Column;
using LatencyChart::BarTone;

constexpr QSizeF barsSize{292, 48};

Column answered(double ms, double loss = 0) {
    return {.slowestMs = ms, .lossShare = loss, .tone = ms <= 100 ? BarTone::good : BarTone::warn};
}

Column wall() {
    return {.slowestMs = 20, .lossShare = 0.5, .tone = BarTone::outage};
}

Column gapOf(double share) {
    return {.gapShare = share};
}

HistoryChart::Chart chartWith(std::vector<Column> columns) {
    HistoryChart::Chart chart{
        .columns = std::move(columns),
        .timeLabels = {{.position = 0.25, .text = "13:00"}, {.position = 0.75, .text = "14:00"}},
        .thresholds = {.lowMs = 100, .highMs = 400},
        .title = "Last hour",
        .figures = "median 20 milliseconds",
        .whyEmpty = "No history is kept."};
    int minute = 0;
    for (Column& column : chart.columns) {
        column.time = "Tue 13:0" + std::to_string(minute++);
        column.figures = "slowest " + std::to_string(minute) + " ms";
    }
    return chart;
}

HistoryChart::ChartLayout layoutOf(std::vector<Column> columns) {
    return HistoryChart::layout(chartWith(std::move(columns)), barsSize, 1);
}

} // namespace

TEST(HistoryChartLayout, BarsAreAsHighAsTheSlowestAnswerOnTheScale) {
    const auto layout = layoutOf({answered(100), answered(50), answered(0.01)});

    EXPECT_NEAR(layout.bars[0].rect.height(), 48 * 100 / 125.0, 1e-9);
    EXPECT_NEAR(layout.bars[1].rect.height(), 48 * 50 / 125.0, 1e-9);
    EXPECT_EQ(layout.bars[2].rect.height(), 3);
    EXPECT_EQ(layout.bars[0].rect.bottom(), 48);
    ASSERT_TRUE(layout.threshold);
    EXPECT_NEAR(layout.threshold.value_or(0), layout.bars[0].rect.top(), 1e-9);
}

TEST(HistoryChartLayout, AnAnswerBeyondTheScaleIsMarkedAsClipped) {
    std::vector<Column> columns(40, answered(50));
    columns[7] = answered(5000);
    const auto layout = layoutOf(columns);

    EXPECT_TRUE(layout.bars[7].isClipped);
    EXPECT_FALSE(layout.bars[8].isClipped);
}

TEST(HistoryChartLayout, ColumnsFillTheWidthOnWholePixels) {
    for (const std::size_t count : {60U, 72U, 56U, 96U, 168U, 12U}) {
        const auto layout = layoutOf(std::vector(count, answered(50)));

        EXPECT_EQ(layout.bars.front().rect.left(), 0);
        EXPECT_EQ(layout.bars.back().rect.right(), 292);
        for (std::size_t index = 1; index < count; ++index) {
            const double left = layout.bars[index].rect.left();
            EXPECT_EQ(left, std::round(left));
            EXPECT_GE(layout.bars[index].rect.width(), 1);
            EXPECT_EQ(left - layout.bars[index - 1].rect.right(), count <= 96 ? 1 : 0);
        }
    }
}

TEST(HistoryChartLayout, AnOutageIsAWallWhateverWasAnswered) {
    const auto layout = layoutOf({answered(50), wall()});

    EXPECT_EQ(layout.bars[1].rect.height(), 48);
    EXPECT_FALSE(layout.bars[1].isClipped);
    EXPECT_TRUE(layout.losses[1].isEmpty());
}

TEST(HistoryChartLayout, TheShareOfLossHangsFromTheTop) {
    const auto layout = layoutOf({answered(50), answered(50, 0.25), answered(50, 0.001)});

    EXPECT_TRUE(layout.losses[0].isEmpty());
    EXPECT_EQ(layout.losses[1].top(), 0);
    EXPECT_EQ(layout.losses[1].height(), 12);
    EXPECT_EQ(layout.losses[1].left(), layout.bars[1].rect.left());
    EXPECT_EQ(layout.losses[1].width(), layout.bars[1].rect.width());
    EXPECT_EQ(layout.losses[2].height(), 3);
}

TEST(HistoryChartLayout, AdjacentGapsAreHatchedAsOne) {
    const auto layout =
        layoutOf({gapOf(1), gapOf(0.6), answered(50), gapOf(0.1), {.slowestMs = 20, .gapShare = 0.4}});

    ASSERT_EQ(layout.gaps.size(), 2U);
    EXPECT_EQ(layout.gaps[0].left(), 0);
    EXPECT_NEAR(layout.gaps[0].right(), layout.bars[2].rect.left() - 1, 1e-9);
    EXPECT_NEAR(layout.gaps[1].left(), layout.bars[2].rect.right() + 1, 1e-9);
    EXPECT_TRUE(layout.bars[0].rect.isEmpty());
}

namespace {

class HistoryChartViewTest : public testing::Test {
protected:
    HistoryChartViewTest() {
        view.setPalette(test::paperPalette());
        QFont font = view.font();
        font.setPixelSize(13);
        view.setFont(font);
        view.resize(292, view.sizeHint().height());
    }

    /// Four columns, each 73 points wide.
    [[nodiscard]] QImage draw(std::vector<Column> columns) {
        view.setChart(chartWith(std::move(columns)));
        return test::drawn(view);
    }

    void pointAt(double x, double y = 20) {
        QMouseEvent move(
            QEvent::MouseMove, QPointF(x, y), QPointF(x, y), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &move);
    }

    void press(Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
    }

    void focus(QEvent::Type type) {
        QFocusEvent event(type, Qt::TabFocusReason);
        QApplication::sendEvent(&view, &event);
    }

    [[nodiscard]] static int inked(const QImage& image, const QRect& place) {
        int count = 0;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                count += image.pixelColor(x, y).lightness() < 220 ? 1 : 0;
            }
        }
        return count;
    }

    /// The rows below the bars, in which times stand.
    [[nodiscard]] QRect timesRow() const {
        return {0, view.barsHeight() + 4, 292, view.chartHeight() - view.barsHeight() - 4};
    }

    [[nodiscard]] QImage drawnWith(std::vector<HistoryChart::TimeLabel> labels) {
        auto chart = chartWith({answered(20), answered(20)});
        chart.timeLabels = std::move(labels);
        view.setChart(chart);
        return test::drawn(view);
    }

    /// How many texts there are that are at least five pixels apart.
    [[nodiscard]] static int textsIn(const QImage& image, const QRect& row) {
        constexpr int distance = 5;
        int count = 0;
        int end = -distance - 1;
        for (int x = row.left(); x <= row.right(); ++x) {
            if (inked(image, QRect(x, row.top(), 1, row.height())) > 0) {
                count += x - end > distance ? 1 : 0;
                end = x;
            }
        }
        return count;
    }

    HistoryChartView view{nullptr};
    LatencyPalette colors{test::paperPalette()};
};

} // namespace

TEST_F(HistoryChartViewTest, ColumnsHaveTheColorsOfTheirLatencies) {
    const QImage image = draw({answered(50), answered(101), wall(), {}});
    const int y = view.barsHeight() - 2;

    EXPECT_EQ(image.pixel(30, y), colors.good().rgb());
    EXPECT_EQ(image.pixel(110, y), colors.warn().rgb());
    EXPECT_TRUE(test::hasColor(image, QRect(180, 1, 1, 1), QColor(205, 73, 66)));
    EXPECT_EQ(image.pixelColor(260, y), QColor(Qt::white));
}

TEST_F(HistoryChartViewTest, ALossIsSeenWithoutColorToo) {
    const QImage image = draw({answered(100, 0.5), answered(20), answered(20), answered(20)});
    const int loss = view.barsHeight() / 2;

    EXPECT_EQ(image.pixel(30, loss - 2), colors.bad().rgb());
    EXPECT_EQ(image.pixelColor(30, loss + 1), QColor(Qt::white)); // a gap between it and the bar
    EXPECT_EQ(image.pixel(30, loss + 4), colors.good().rgb());
}

TEST_F(HistoryChartViewTest, AGapIsHatched) {
    const QImage image = draw({gapOf(1), answered(20), {}, answered(20)});
    const QRect gap(2, 2, 68, view.barsHeight() - 4);
    const int hatched = inked(image, gap);

    EXPECT_GT(hatched, gap.width() * gap.height() / 10);
    EXPECT_LT(hatched, gap.width() * gap.height() / 2);
    EXPECT_EQ(inked(image, gap.translated(146, 0)), 0); // nothing is known there
}

TEST_F(HistoryChartViewTest, ItIsAsHighAsTheChartOfFiveMinutes) {
    EXPECT_EQ(view.chartHeight(), 64);
    EXPECT_LT(view.barsHeight(), 64);

    view.lower(40);

    EXPECT_EQ(view.chartHeight(), 24);
    EXPECT_EQ(view.barsHeight(), 24); // no room for times
}

TEST_F(HistoryChartViewTest, AnotherWindowMayWantItHigher) {
    view.setDesignHeight(120);

    EXPECT_EQ(view.chartHeight(), 120);
}

TEST_F(HistoryChartViewTest, TimesStandBelowTheBars) {
    const QImage image = draw({answered(50), answered(50), answered(50), answered(50)});
    const QRect row(0, view.barsHeight() + 1, 292, view.chartHeight() - view.barsHeight() - 1);

    EXPECT_GT(inked(image, QRect(73 - 15, row.top(), 30, row.height())), 20);
    EXPECT_GT(inked(image, QRect(219 - 15, row.top(), 30, row.height())), 20);
    EXPECT_EQ(inked(image, QRect(110, row.top(), 70, row.height())), 0);
}

TEST_F(HistoryChartViewTest, TimesNeverTouchEachOther) {
    const HistoryChart::TimeLabel first{.position = 0.25, .text = "13:00"};
    const QImage alone = drawnWith({first});
    ASSERT_EQ(textsIn(alone, timesRow()), 1);
    int pairs = 0;
    for (int center = 75; center < 175; ++center) {
        const QImage both = drawnWith({first, {.position = center / 292.0, .text = "14:00"}});
        if (both != alone) {
            ++pairs;
            EXPECT_EQ(textsIn(both, timesRow()), 2) << center;
        }
    }
    EXPECT_GT(pairs, 50);
}

TEST_F(HistoryChartViewTest, TimesAtTheEdgesAreWhole) {
    const int whole = inked(drawnWith({{.position = 0.5, .text = "13:00"}}), timesRow());

    EXPECT_GT(inked(drawnWith({{.position = 0, .text = "13:00"}}), timesRow()), whole * 9 / 10);
    EXPECT_GT(inked(drawnWith({{.position = 1, .text = "13:00"}}), timesRow()), whole * 9 / 10);
}

TEST_F(HistoryChartViewTest, ALongReasonIsWrapped) {
    HistoryChart::Chart chart = chartWith({{}, {}});
    chart.whyEmpty = "No history is kept, since that is switched off in the settings of this program.";
    view.setChart(chart);

    EXPECT_GT(inked(test::drawn(view), QRect(0, view.barsHeight() / 2 - 13, 292, 5)), 20);
}

TEST_F(HistoryChartViewTest, WithoutAnythingKnownItSaysWhy) {
    const QImage image = draw({{}, {}, {}, {}});

    EXPECT_GT(inked(image, QRect(90, 10, 110, view.barsHeight() - 20)), 50);
    EXPECT_EQ(view.accessibleName(), "Last hour, No history is kept.");
}

TEST_F(HistoryChartViewTest, ItIsReadAloudAsOneChart) {
    view.setChart(chartWith({answered(20)}));

    EXPECT_EQ(QAccessible::queryAccessibleInterface(&view)->role(), QAccessible::Chart);
    EXPECT_EQ(view.accessibleName(), "Last hour, median 20 milliseconds");
    EXPECT_EQ(view.accessibleDescription(), "");
}

TEST_F(HistoryChartViewTest, TheColumnAtThePointerIsTold) {
    view.setChart(chartWith({answered(20), answered(30), answered(40), answered(50)}));
    const QImage before = test::drawn(view);

    pointAt(74);

    EXPECT_EQ(view.pointedAt(), 1U);
    EXPECT_EQ(view.accessibleDescription(), "Tue 13:01: slowest 2 ms");
    const QImage pointed = test::drawn(view);
    EXPECT_NE(pointed.pixelColor(110, 2), before.pixelColor(110, 2)); // its ground
    EXPECT_EQ(pointed.pixelColor(110, view.barsHeight() + 2), QColor(Qt::black));
    EXPECT_EQ(pointed.pixelColor(110, view.barsHeight()), QColor(Qt::white));
    const QRect caption(0, view.chartHeight() + 5, 292, view.height() - view.chartHeight() - 5);
    EXPECT_NE(pointed.copy(caption), before.copy(caption));

    pointAt(291.9);
    EXPECT_EQ(view.pointedAt(), 3U);
    pointAt(0);
    EXPECT_EQ(view.pointedAt(), 0U);
}

TEST_F(HistoryChartViewTest, ThePointedColumnsTimeStandsBelowItAndItsFiguresInTheCaption) {
    HistoryChart::Chart chart = chartWith({answered(20), answered(20), answered(20), answered(20)});
    for (HistoryChart::Column& column : chart.columns) {
        column.figures = "slowest 20 ms";
    }
    view.setChart(chart);
    const QRect caption(0, view.chartHeight() + 5, 292, view.height() - view.chartHeight() - 5);
    pointAt(74);
    const QImage second = test::drawn(view);
    pointAt(74 + 73);
    const QImage third = test::drawn(view);

    const QRect row = timesRow();
    const int left = inked(second, QRect(50, row.top(), 59, row.height()));
    const int right = inked(second, QRect(110, row.top(), 59, row.height()));
    EXPECT_GT(left, 20);
    EXPECT_NEAR(left, right, left / 2.0);
    EXPECT_EQ(second.copy(caption), third.copy(caption));

    view.lower(40); // no room for times: the caption has them
    const QRect lowCaption(0, view.chartHeight() + 5, 292, view.height() - view.chartHeight() - 5);
    pointAt(74, 5);
    const QImage low = test::drawn(view).copy(lowCaption);
    pointAt(74 + 73, 5);
    EXPECT_NE(test::drawn(view).copy(lowCaption), low);
}

TEST_F(HistoryChartViewTest, FiguresThatAreTooLongEndInDots) {
    HistoryChart::Chart chart = chartWith({answered(20)});
    chart.columns[0].figures = std::string(200, 'l');
    view.setChart(chart);
    pointAt(10);
    const QImage image = test::drawn(view);
    const int top = view.chartHeight() + 5;

    EXPECT_GT(inked(image, QRect(240, top, 20, 9)), 0);
    EXPECT_EQ(inked(image, QRect(284, top, 8, 9)), 0);
}

TEST_F(HistoryChartViewTest, WhatItDoesNotUseIsLeftToTheWindow) {
    view.setChart(chartWith({answered(20), answered(30)}));
    QMouseEvent move(
        QEvent::MouseMove, QPointF(5, 5), QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &move);
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(&view, &escape);

    EXPECT_FALSE(move.isAccepted());
    EXPECT_FALSE(escape.isAccepted());
}

TEST_F(HistoryChartViewTest, APointerDraggedBeyondTheLeftEdgePointsAtNothing) {
    view.setChart(chartWith({answered(20), answered(30)}));
    pointAt(5);
    ASSERT_EQ(view.pointedAt(), 0U);
    pointAt(-3);

    EXPECT_EQ(view.pointedAt(), std::nullopt);
}

TEST_F(HistoryChartViewTest, TheKeyboardTakesOverWhatThePointerPointsAt) {
    view.setChart(chartWith({answered(20), answered(30)}));
    pointAt(5);
    focus(QEvent::FocusIn);

    EXPECT_EQ(view.pointedAt(), 0U);
}

TEST_F(HistoryChartViewTest, NothingIsToldOnceThePointerIsElsewhere) {
    view.setChart(chartWith({answered(20), answered(30)}));
    for (const bool leaves : {true, false}) {
        pointAt(74);
        if (leaves) {
            QEvent leave(QEvent::Leave);
            QApplication::sendEvent(&view, &leave);
        } else {
            pointAt(74, view.chartHeight() + 3);
        }

        EXPECT_EQ(view.pointedAt(), std::nullopt);
        EXPECT_EQ(view.accessibleDescription(), "");
    }
}

TEST_F(HistoryChartViewTest, KeysLeadFromColumnToColumn) {
    view.setChart(chartWith({answered(20), answered(30), answered(40)}));
    focus(QEvent::FocusIn);
    EXPECT_EQ(view.pointedAt(), 2U); // the latest

    press(Qt::Key_Right);
    EXPECT_EQ(view.pointedAt(), 2U);
    press(Qt::Key_Left);
    EXPECT_EQ(view.pointedAt(), 1U);
    EXPECT_EQ(view.accessibleDescription(), "Tue 13:01: slowest 2 ms");
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(view.pointedAt(), 0U);
    press(Qt::Key_Right);
    EXPECT_EQ(view.pointedAt(), 1U);

    focus(QEvent::FocusOut);
    EXPECT_EQ(view.pointedAt(), std::nullopt);
}

TEST_F(HistoryChartViewTest, KeysBeginAtTheLatestWhereNothingIsPointedAt) {
    view.setChart(chartWith({answered(20), answered(30), answered(40)}));
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right}) {
        pointAt(10);
        pointAt(10, view.chartHeight() + 3); // the pointer leaves, the keyboard stays

        press(key);

        EXPECT_EQ(view.pointedAt(), 2U);
    }
}

TEST_F(HistoryChartViewTest, TheGroundOfAColumnIsSeenButHidesNothing) {
    view.setChart(chartWith({answered(20), answered(30), answered(40), answered(50)}));
    pointAt(110);
    const QColor ground = test::drawn(view).pixelColor(110, 2);

    EXPECT_LT(ground.lightness(), 235);
    EXPECT_GT(ground.lightness(), 200);
}

TEST_F(HistoryChartViewTest, AnotherChartTellsItsOwnColumns) {
    view.setChart(chartWith({answered(20), answered(30), answered(40)}));
    pointAt(290);
    view.setChart(chartWith({answered(20), answered(30)}));

    EXPECT_EQ(view.pointedAt(), std::nullopt);
    EXPECT_EQ(view.accessibleDescription(), "");
}

TEST_F(HistoryChartViewTest, WithoutColumnsNothingIsTold) {
    view.setChart(chartWith({}));
    pointAt(10);
    focus(QEvent::FocusIn);
    press(Qt::Key_Left);

    EXPECT_EQ(view.pointedAt(), std::nullopt);
    EXPECT_FALSE(test::drawn(view).isNull());
}

} // namespace tarnwick
