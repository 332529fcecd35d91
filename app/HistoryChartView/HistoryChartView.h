// The chart of a longer span, with its times and its caption.
#pragma once

#include "app/HistoryChartView/ChartParts.h"
#include "app/Reading/HistoryChart.h"
#include "app/ViewStyle/ReadAloud.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tarnwick {

namespace HistoryChart {

struct ChartLayout {
    std::vector<LatencyChart::ChartBar>
        bars{};                   ///< one for each column, an empty rectangle where there is none
    std::vector<QRectF> losses{}; ///< likewise: hanging from the top, as long as the share that was lost
    std::vector<QRectF> gaps{};   ///< to be hatched; adjacent ones are one
    std::optional<double> threshold = std::nullopt; ///< height of the line, if it is on the scale
};

/// Places the bars so that their sides lie on whole device pixels, `pixelRatio` of them to a unit of `size`.
[[nodiscard]] ChartLayout layout(const Chart& chart, QSizeF size, double pixelRatio);

} // namespace HistoryChart

/// As high as the chart of five minutes. The column at the pointer, or while it has the focus the one that
/// Left and Right lead to, is told below the chart.
class HistoryChartView final : public ReadAloudWidget {
public:
    explicit HistoryChartView(QWidget* parent);

    /// Draws again only if something differs.
    void setChart(const HistoryChart::Chart& chart);

    /// Of bars and times, in the points of the design.
    void setDesignHeight(double points);
    /// Draws the bars this much lower than usual, as far as they stay readable.
    void lower(int pixels);

    /// Of the bars and the times below them, without the caption.
    [[nodiscard]] int chartHeight() const;
    /// Of the bars alone. Where these would be too low, there are no times.
    [[nodiscard]] int barsHeight() const;
    [[nodiscard]] QSize sizeHint() const override;

    /// Which column is told.
    [[nodiscard]] std::optional<std::size_t> pointedAt() const { return pointed_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void pointAt(std::optional<std::size_t> column);
    [[nodiscard]] const HistoryChart::Column* pointedColumn() const;
    [[nodiscard]] int timesHeight() const;
    void drawBars(QPainter& painter) const;
    void drawPointed(QPainter& painter) const;
    void drawWhyEmpty(QPainter& painter) const;
    void drawTimes(QPainter& painter) const;
    void drawCaption(QPainter& painter) const;

    HistoryChart::Chart chart_;
    std::optional<std::size_t> pointed_;
    double designHeight_ = ChartParts::viewHeight;
    int lowered_ = 0;
};

} // namespace tarnwick
