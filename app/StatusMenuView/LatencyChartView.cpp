#include "app/StatusMenuView/LatencyChartView.h"

#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace LatencyChart {

ChartLayout layout(const Chart& chart, QSizeF size, double pixelRatio) {
    ChartLayout layout;
    const ChartParts::Scale scale(chart.scaleMax(), size.height());
    const ChartParts::BarPlaces places(size.width(), chart.buckets.size(), pixelRatio);
    for (std::size_t index = 0; index < chart.buckets.size(); ++index) {
        const Bucket& bucket = chart.buckets[index];
        ChartBar bar{.tone = chart.tone(bucket)};
        if (bar.tone != BarTone::none) {
            const double height = bucket.worstRtt
                                      ? std::max(scale.heightOf(*bucket.worstRtt), ChartParts::smallestBar)
                                      : size.height();
            const double left = places.left(index);
            bar.rect = {left, size.height() - height, places.right(index) - left, height};
            bar.isClipped = scale.clips(bucket.worstRtt.value_or(0));
            bar.hasLoss = bucket.worstRtt && bucket.lost;
        }
        layout.bars.push_back(bar);
    }
    if (scale.has(chart.lowThresholdMs)) {
        layout.threshold = size.height() - scale.heightOf(chart.lowThresholdMs);
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
    return std::max(style.length(ChartParts::lowestHeight), style.length(ChartParts::viewHeight) - lowered_);
}

void LatencyChartView::lower(int pixels) {
    lowered_ = std::max(0, pixels);
    update();
}

QSize LatencyChartView::sizeHint() const {
    const ViewStyle style(*this);
    const double caption = std::ceil(QFontMetricsF(style.font(ViewStyle::smallText)).height());
    return {0, chartHeight() + style.length(ChartParts::captionGap) + static_cast<int>(caption)};
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
        ChartParts::drawThreshold(painter, style, *layout.threshold, QSizeF(width(), chartHeight()));
    }
}

void LatencyChartView::drawCaption(QPainter& painter) const {
    const ViewStyle style(*this);
    const QFontMetricsF metrics(style.font(ViewStyle::smallText));
    const double baseline =
        chartHeight() + style.length(ChartParts::captionGap) + std::round(metrics.ascent());
    ChartParts::drawCaption(
        painter, style, width(), baseline, QString::fromLatin1(LatencyChart::periodText),
        QString::fromStdString(chart_.thresholdText()));
}

} // namespace tarnwick
