// The latency chart of the menu view, with its caption.
#pragma once

#include "app/HistoryChartView/ChartParts.h"
#include "app/Reading/LatencyChart.h"
#include "app/ViewStyle/ReadAloud.h"

#include <optional>
#include <vector>

namespace tarnwick {

namespace LatencyChart {

struct ChartLayout {
    std::vector<ChartBar> bars{}; ///< one for each bucket, an empty rectangle where there is none
    std::optional<double> threshold = std::nullopt; ///< height of the line, if it is on the scale
};

/// Places the bars so that their sides lie on whole device pixels, `pixelRatio` of them to a unit of `size`.
[[nodiscard]] ChartLayout layout(const Chart& chart, QSizeF size, double pixelRatio);

} // namespace LatencyChart

class LatencyChartView final : public ReadAloudWidget {
public:
    explicit LatencyChartView(QWidget* parent);

    /// Draws again only if something differs.
    void setChart(const LatencyChart::Chart& chart);

    /// Draws the bars this much lower than usual, as far as they stay readable.
    void lower(int pixels);

    /// Of the bars, without the caption.
    [[nodiscard]] int chartHeight() const;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawChart(QPainter& painter) const;
    void drawCaption(QPainter& painter) const;

    LatencyChart::Chart chart_;
    int lowered_ = 0;
};

} // namespace tarnwick
