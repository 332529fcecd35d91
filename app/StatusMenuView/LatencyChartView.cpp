#include "app/StatusMenuView/LatencyChartView.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double barGap = 1;
constexpr double barCornerRadius = 1.5;
constexpr double smallestBar = 3;
constexpr double notchWidth = 5;
constexpr double notchDepth = 3;
constexpr double capGap = 2; ///< between a bar and the cap that tells of a loss
constexpr double capHeight = 3;
constexpr double viewHeight = 64;
constexpr double lowestHeight = 24;
constexpr double captionGap = 10;
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

} // namespace

namespace LatencyChart {

namespace {

/// The bar with a cap over it, or cut off from its top where the chart ends.
QPainterPath capped(const QPainterPath& bar, const QRectF& rect) {
    const double capTop = std::max(rect.top() - capGap - capHeight, 0.0);
    QPainterPath gap;
    gap.addRect(QRectF(rect.left(), capTop + capHeight, rect.width(), capGap));
    QPainterPath cap;
    cap.addRect(QRectF(rect.left(), capTop, rect.width(), capHeight));
    return bar.subtracted(gap).united(cap);
}

} // namespace

QPainterPath ChartBar::path() const {
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

ChartLayout layout(const Chart& chart, QSizeF size, double pixelRatio) {
    ChartLayout layout;
    const double top = chart.scaleMax();
    // A stored threshold of zero or less can make a scale without extent.
    const auto heightOf = [&](double ms) { return top > 0 ? size.height() * std::min(ms, top) / top : 0; };
    const auto snapped = [pixelRatio](double x) { return std::round(x * pixelRatio) / pixelRatio; };
    const double slot = (size.width() + barGap) / static_cast<double>(chart.buckets.size());
    for (std::size_t index = 0; index < chart.buckets.size(); ++index) {
        const Bucket& bucket = chart.buckets[index];
        ChartBar bar{.tone = chart.tone(bucket)};
        if (bar.tone != BarTone::none) {
            const double height =
                bucket.worstRtt ? std::max(heightOf(*bucket.worstRtt), smallestBar) : size.height();
            const double left = snapped(static_cast<double>(index) * slot);
            const double right = snapped(static_cast<double>(index + 1) * slot) - barGap;
            bar.rect = {left, size.height() - height, right - left, height};
            bar.isClipped = bucket.worstRtt.value_or(0) > top;
            bar.hasLoss = bucket.worstRtt && bucket.lost;
        }
        layout.bars.push_back(bar);
    }
    if (top > 0 && chart.lowThresholdMs <= top) {
        layout.threshold = size.height() - heightOf(chart.lowThresholdMs);
    }
    return layout;
}

} // namespace LatencyChart

LatencyChartView::LatencyChartView(QWidget* parent) : ReadAloudWidget(Role::chart, parent) {
}

void LatencyChartView::setChart(const LatencyChart::Chart& chart) {
    if (chart == chart_) {
        return;
    }
    chart_ = chart;
    setSpokenText(QString::fromStdString(chart.summary()));
    update();
}

int LatencyChartView::chartHeight() const {
    const ViewStyle style(*this);
    return std::max(style.length(lowestHeight), style.length(viewHeight) - lowered_);
}

void LatencyChartView::lower(int pixels) {
    lowered_ = std::max(0, pixels);
    update();
}

QSize LatencyChartView::sizeHint() const {
    const ViewStyle style(*this);
    const double caption = std::ceil(QFontMetricsF(style.font(11)).height());
    return {0, chartHeight() + style.length(captionGap) + static_cast<int>(caption)};
}

void LatencyChartView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawChart(painter);
    drawCaption(painter);
}

void LatencyChartView::drawChart(QPainter& painter) const {
    const ViewStyle style(*this);
    const LatencyChart::ChartLayout layout = LatencyChart::layout(
        chart_, {static_cast<double>(width()), static_cast<double>(chartHeight())}, devicePixelRatioF());
    painter.setPen(Qt::NoPen);
    for (const LatencyChart::ChartBar& bar : layout.bars) {
        if (bar.tone != LatencyChart::BarTone::none) {
            painter.fillPath(bar.path(), style.colors().of(bar.tone));
        }
    }
    if (layout.threshold) {
        // Through the middle of a row of pixels, or it would be spread over two.
        const double y = std::clamp(std::floor(*layout.threshold) + 0.5, 0.5, chartHeight() - 0.5);
        painter.setPen(thresholdPen(style));
        painter.drawLine(QPointF(0, y), QPointF(width(), y));
    }
}

void LatencyChartView::drawCaption(QPainter& painter) const {
    const ViewStyle style(*this);
    const QFont font = style.font(11);
    const QFontMetricsF metrics(font);
    const double baseline = chartHeight() + style.length(captionGap) + std::round(metrics.ascent());
    const TabularLine period(font, QString::fromLatin1(LatencyChart::periodText));
    const TabularLine threshold(font, QString::fromStdString(chart_.thresholdText()));
    const double left = std::floor(width() - threshold.width());
    painter.setPen(style.colors().secondary());
    period.draw(painter, {0, baseline});
    threshold.draw(painter, {left, baseline});

    const double right = left - style.length(sampleGap);
    const double y = std::floor(baseline - metrics.xHeight() / 2) + 0.5;
    painter.setPen(thresholdPen(style));
    painter.drawLine(QPointF(right - style.length(sampleWidth), y), QPointF(right, y));
}

} // namespace tarnwick
