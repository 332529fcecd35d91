// What all charts of latencies have in common: bars, the line of the threshold, the caption.
#pragma once

#include "app/Reading/LatencyChart.h"

#include <QPainterPath>
#include <QSizeF>
#include <QString>

#include <algorithm>
#include <cstddef>

class QPainter;

namespace tarnwick {

class ViewStyle;

namespace LatencyChart {

/// What is drawn of one bucket.
struct ChartBar {
    QRectF rect{};
    BarTone tone = BarTone::none;
    bool isClipped = false; ///< higher than the chart: its top has a notch
    bool hasLoss = false;   ///< beside a reply: a cap lies over it, so that more than the color tells

    [[nodiscard]] QPainterPath path() const;

    friend bool operator==(const ChartBar&, const ChartBar&) = default;
};

} // namespace LatencyChart

namespace ChartParts {

/// Lengths of the design.
inline constexpr double viewHeight = 64;   ///< of the bars
inline constexpr double lowestHeight = 24; ///< on low screens
inline constexpr double captionGap = 10;   ///< below the bars
inline constexpr double smallestBar = 3;
inline constexpr double lossGap = 2; ///< between a bar and what tells of a loss

/// How high a latency is, up to the top of the chart.
class Scale {
public:
    /// `top` in milliseconds.
    Scale(double top, double height) : top_(top), height_(height) {}

    // A stored threshold of zero or less can make a scale without extent.
    [[nodiscard]] double heightOf(double ms) const {
        return top_ > 0 ? height_ * std::min(ms, top_) / top_ : 0;
    }

    [[nodiscard]] bool has(double ms) const { return top_ > 0 && ms <= top_; }

    [[nodiscard]] bool clips(double ms) const { return ms > top_; }

private:
    double top_;
    double height_;
};

/// Bars side by side, with their sides on whole device pixels, `pixelRatio` of them to a unit of `width`.
class BarPlaces {
public:
    BarPlaces(double width, std::size_t count, double pixelRatio);

    [[nodiscard]] double left(std::size_t index) const;
    [[nodiscard]] double right(std::size_t index) const;

private:
    [[nodiscard]] double snapped(double x) const;

    double gap_;
    double slot_;
    double pixelRatio_;
};

/// Dashed, at `y` below the top of bars that are this wide and high.
void drawThreshold(QPainter& painter, const ViewStyle& style, double y, QSizeF bars);

/// `text` at the left; at the right that of the threshold, with a sample of its line.
void drawCaption(
    QPainter& painter, const ViewStyle& style, double width, double baseline, const QString& text,
    const QString& threshold);

} // namespace ChartParts

} // namespace tarnwick
