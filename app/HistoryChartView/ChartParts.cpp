#include "app/HistoryChartView/ChartParts.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double barGap = 1;
constexpr double narrowestSlot = 2.5; ///< that has room for a gap
constexpr double barCornerRadius = 1.5;
constexpr double notchWidth = 5;
constexpr double notchDepth = 3;
constexpr double capHeight = 3;
constexpr double sampleWidth = 12; ///< of the line in the caption
constexpr double sampleGap = 5;

/// Dashed so that the sample in the caption begins and ends with a dash.
QPen thresholdPen(const ViewStyle& style) {
    const double dash = style.length(sampleWidth) / 3.0;
    QPen pen(style.colors().tertiary(), 1);
    pen.setDashPattern({dash, dash});
    pen.setCapStyle(Qt::FlatCap);
    return pen;
}

/// The bar with a cap over it, or cut off from its top where the chart ends.
QPainterPath capped(const QPainterPath& bar, const QRectF& rect) {
    const double capTop = std::max(rect.top() - ChartParts::lossGap - capHeight, 0.0);
    QPainterPath gap;
    gap.addRect(QRectF(rect.left(), capTop + capHeight, rect.width(), ChartParts::lossGap));
    QPainterPath cap;
    cap.addRect(QRectF(rect.left(), capTop, rect.width(), capHeight));
    return bar.subtracted(gap).united(cap);
}

} // namespace

QPainterPath LatencyChart::ChartBar::path() const {
    QPainterPath path;
    const double radius = std::min({barCornerRadius, rect.width() / 2, rect.height() / 2});
    path.addRoundedRect(rect, radius, radius);
    if (isClipped) {
        const double half = std::min(notchWidth, rect.width()) / 2;
        QPainterPath notch;
        notch.moveTo(rect.center().x() - half, rect.top());
        notch.lineTo(rect.center().x(), rect.top() + notchDepth);
        notch.lineTo(rect.center().x() + half, rect.top());
        notch.closeSubpath();
        path = path.subtracted(notch);
    }
    return hasLoss ? capped(path, rect) : path;
}

namespace ChartParts {

BarPlaces::BarPlaces(double width, std::size_t count, double pixelRatio)
    : gap_(width / static_cast<double>(count) >= narrowestSlot ? barGap : 0),
      slot_((width + gap_) / static_cast<double>(count)),
      pixelRatio_(pixelRatio) {
}

double BarPlaces::snapped(double x) const {
    return std::round(x * pixelRatio_) / pixelRatio_;
}

double BarPlaces::left(std::size_t index) const {
    return snapped(static_cast<double>(index) * slot_);
}

double BarPlaces::right(std::size_t index) const {
    return snapped(static_cast<double>(index + 1) * slot_) - gap_;
}

void drawThreshold(QPainter& painter, const ViewStyle& style, double y, QSizeF bars) {
    // Through the middle of a row of pixels, or it would be spread over two.
    const double middle = std::clamp(std::floor(y) + 0.5, 0.5, bars.height() - 0.5);
    painter.setPen(thresholdPen(style));
    painter.drawLine(QPointF(0, middle), QPointF(bars.width(), middle));
}

void drawCaption(
    QPainter& painter, const ViewStyle& style, double width, double baseline, const QString& text,
    const QString& threshold) {
    const QFont font = style.font(ViewStyle::smallText);
    const TabularLine line(font, threshold);
    const double left = std::floor(width - line.width());
    painter.setPen(style.colors().secondary());
    TabularLine(font, text).draw(painter, {0, baseline});
    line.draw(painter, {left, baseline});

    const double right = left - style.length(sampleGap);
    const double y = std::floor(baseline - QFontMetricsF(font).xHeight() / 2) + 0.5;
    painter.setPen(thresholdPen(style));
    painter.drawLine(QPointF(right - style.length(sampleWidth), y), QPointF(right, y));
}

} // namespace ChartParts

} // namespace tarnwick
