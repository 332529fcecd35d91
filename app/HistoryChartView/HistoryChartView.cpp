#include "app/HistoryChartView/HistoryChartView.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double timesGap = 4;      ///< between the bars and their times
constexpr double timesDistance = 6; ///< between two of them
constexpr double hatchDistance = 5;
constexpr double shortestLoss = 3;
constexpr float pointedOpacity = 0.14F;
constexpr double pointedMark = 2; ///< below the column

void drawHatched(QPainter& painter, const QRectF& rect, const QColor& color) {
    painter.save();
    painter.setClipRect(rect);
    painter.setPen(QPen(color, 1));
    // From one grid for all, so that neighbors match.
    const int first = static_cast<int>(std::floor((rect.left() - rect.height()) / hatchDistance));
    const int last = static_cast<int>(std::ceil(rect.right() / hatchDistance));
    for (int line = first; line <= last; ++line) {
        const double x = line * hatchDistance;
        painter.drawLine(QPointF(x, rect.bottom()), QPointF(x + rect.height(), rect.top()));
    }
    painter.restore();
}

/// What the loss leaves of a bar.
QPainterPath withoutLoss(const QRectF& loss, const LatencyChart::ChartBar& bar) {
    if (loss.isEmpty() || bar.tone == LatencyChart::BarTone::outage) {
        return bar.path();
    }
    QPainterPath taken;
    taken.addRect(loss.adjusted(0, 0, 0, ChartParts::lossGap));
    return bar.path().subtracted(taken);
}

} // namespace

namespace HistoryChart {

ChartLayout layout(const Chart& chart, QSizeF size, double pixelRatio) {
    ChartLayout layout;
    const double top = chart.scaleMax();
    const ChartParts::Scale scale(top, size.height());
    const ChartParts::BarPlaces places(size.width(), chart.columns.size(), pixelRatio);
    bool continuesGap = false;
    for (std::size_t index = 0; index < chart.columns.size(); ++index) {
        const Column& column = chart.columns[index];
        const double left = places.left(index);
        const double width = places.right(index) - left;
        LatencyChart::ChartBar bar{.tone = column.tone};
        QRectF loss;
        if (column.isWall()) {
            bar.rect = {left, 0, width, size.height()};
        } else if (column.slowestMs) {
            const double height = std::max(scale.heightOf(*column.slowestMs), ChartParts::smallestBar);
            bar.rect = {left, size.height() - height, width, height};
            bar.isClipped = scale.clips(*column.slowestMs);
            const double lost = std::max(column.lossShare * size.height(), shortestLoss);
            loss = column.lossShare > 0 ? QRectF(left, 0, width, lost) : QRectF();
        }
        layout.bars.push_back(bar);
        layout.losses.push_back(loss);
        if (column.isGap() && continuesGap) {
            layout.gaps.back().setRight(left + width);
        } else if (column.isGap()) {
            layout.gaps.emplace_back(left, 0, width, size.height());
        }
        continuesGap = column.isGap();
    }
    if (scale.has(chart.thresholds.lowMs)) {
        layout.threshold = size.height() - scale.heightOf(chart.thresholds.lowMs);
    }
    return layout;
}

} // namespace HistoryChart

HistoryChartView::HistoryChartView(QWidget* parent) : ReadAloudWidget(Role::chart, parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
}

void HistoryChartView::setChart(const HistoryChart::Chart& chart) {
    if (chart == chart_) {
        return;
    }
    chart_ = chart;
    setSpokenText(QString::fromStdString(chart.summary()));
    pointAt(pointed_);
    update();
}

void HistoryChartView::setDesignHeight(double points) {
    designHeight_ = points;
    update();
}

void HistoryChartView::lower(int pixels) {
    lowered_ = std::max(0, pixels);
    update();
}

int HistoryChartView::chartHeight() const {
    const ViewStyle style(*this);
    return std::max(style.length(ChartParts::lowestHeight), style.length(designHeight_) - lowered_);
}

int HistoryChartView::timesHeight() const {
    const ViewStyle style(*this);
    const double line = QFontMetricsF(style.font(ViewStyle::smallText)).height();
    const int height = style.length(timesGap) + static_cast<int>(std::ceil(line));
    return chartHeight() - height >= style.length(ChartParts::lowestHeight) ? height : 0;
}

int HistoryChartView::barsHeight() const {
    return chartHeight() - timesHeight();
}

QSize HistoryChartView::sizeHint() const {
    const ViewStyle style(*this);
    const double caption = std::ceil(QFontMetricsF(style.font(ViewStyle::smallText)).height());
    return {0, chartHeight() + style.length(ChartParts::captionGap) + static_cast<int>(caption)};
}

void HistoryChartView::pointAt(std::optional<std::size_t> column) {
    const bool isThere = column && *column < chart_.columns.size();
    const auto pointed = isThere ? column : std::nullopt;
    if (pointed != pointed_) {
        pointed_ = pointed;
        update();
    }
    const auto* const told = pointedColumn();
    const QString text = told != nullptr ? QString::fromStdString(told->text()) : QString();
    if (text != accessibleDescription()) {
        setAccessibleDescription(text);
    }
}

const HistoryChart::Column* HistoryChartView::pointedColumn() const {
    return pointed_ ? &chart_.columns[*pointed_] : nullptr;
}

void HistoryChartView::mouseMoveEvent(QMouseEvent* event) {
    const double x = event->position().x();
    if (x >= 0 && x < width() && event->position().y() < chartHeight()) {
        pointAt(static_cast<std::size_t>(x * static_cast<double>(chart_.columns.size()) / width()));
    } else {
        pointAt(std::nullopt);
    }
    event->ignore(); // the window wants to know, too
}

void HistoryChartView::leaveEvent(QEvent* /*event*/) {
    pointAt(std::nullopt);
}

void HistoryChartView::keyPressEvent(QKeyEvent* event) {
    const std::size_t count = chart_.columns.size();
    if (event->key() == Qt::Key_Left && count > 0) {
        pointAt(pointed_ ? std::max<std::size_t>(*pointed_, 1) - 1 : count - 1);
    } else if (event->key() == Qt::Key_Right && count > 0) {
        pointAt(pointed_ ? std::min(*pointed_ + 1, count - 1) : count - 1);
    } else {
        ReadAloudWidget::keyPressEvent(event);
    }
}

void HistoryChartView::focusInEvent(QFocusEvent* event) {
    if (!pointed_ && !chart_.columns.empty()) {
        pointAt(chart_.columns.size() - 1);
    }
    ReadAloudWidget::focusInEvent(event);
}

void HistoryChartView::focusOutEvent(QFocusEvent* event) {
    pointAt(std::nullopt);
    ReadAloudWidget::focusOutEvent(event);
}

void HistoryChartView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    drawPointed(painter);
    if (chart_.isEmpty()) {
        drawWhyEmpty(painter);
    } else {
        drawBars(painter);
    }
    drawTimes(painter);
    drawCaption(painter);
}

void HistoryChartView::drawPointed(QPainter& painter) const {
    if (!pointed_) {
        return;
    }
    const ChartParts::BarPlaces places(width(), chart_.columns.size(), devicePixelRatioF());
    const double left = places.left(*pointed_);
    const double width = places.right(*pointed_) - left;
    const QColor ink = ViewStyle(*this).colors().primary();
    QColor ground = ink;
    ground.setAlphaF(pointedOpacity);
    painter.fillRect(QRectF(left, 0, width, barsHeight()), ground);
    // A wall covers the ground.
    painter.fillRect(QRectF(left, barsHeight() + 1, width, pointedMark), ink);
}

void HistoryChartView::drawBars(QPainter& painter) const {
    const ViewStyle style(*this);
    const QSizeF size(width(), barsHeight());
    const HistoryChart::ChartLayout layout = HistoryChart::layout(chart_, size, devicePixelRatioF());
    for (const QRectF& gap : layout.gaps) {
        drawHatched(painter, gap, style.colors().tertiary());
    }
    painter.setPen(Qt::NoPen);
    for (std::size_t index = 0; index < layout.bars.size(); ++index) {
        const LatencyChart::ChartBar& bar = layout.bars[index];
        const QRectF& loss = layout.losses[index];
        if (bar.tone != LatencyChart::BarTone::none) {
            painter.fillPath(withoutLoss(loss, bar), style.colors().of(bar.tone));
        }
        painter.fillRect(loss, style.colors().bad());
    }
    if (layout.threshold) {
        ChartParts::drawThreshold(painter, style, *layout.threshold, size);
    }
}

void HistoryChartView::drawWhyEmpty(QPainter& painter) const {
    const ViewStyle style(*this);
    painter.setPen(style.colors().secondary());
    painter.setFont(style.font(ViewStyle::smallText));
    painter.drawText(
        QRectF(0, 0, width(), barsHeight()), Qt::AlignCenter | Qt::TextWordWrap,
        QString::fromStdString(chart_.whyEmpty));
}

void HistoryChartView::drawTimes(QPainter& painter) const {
    if (timesHeight() == 0) {
        return;
    }
    const ViewStyle style(*this);
    const QFont font = style.font(ViewStyle::smallText);
    const double baseline = chartHeight() - std::ceil(QFontMetricsF(font).descent());
    double freeFrom = 0;
    const auto draw = [&](const std::string& text, double center) {
        const TabularLine line(font, QString::fromStdString(text));
        const double left =
            std::clamp(std::round(center - line.width() / 2), 0.0, std::max(0.0, width() - line.width()));
        if (left >= freeFrom) {
            line.draw(painter, {left, baseline});
            freeFrom = left + line.width() + style.length(timesDistance);
        }
    };
    if (pointed_) {
        const auto count = static_cast<double>(chart_.columns.size());
        painter.setPen(style.colors().primary());
        draw(chart_.columns[*pointed_].time, (static_cast<double>(*pointed_) + 0.5) * width() / count);
        return;
    }
    painter.setPen(style.colors().secondary());
    for (const HistoryChart::TimeLabel& label : chart_.timeLabels) {
        draw(label.text, label.position * width());
    }
}

void HistoryChartView::drawCaption(QPainter& painter) const {
    const ViewStyle style(*this);
    const QFontMetricsF metrics(style.font(ViewStyle::smallText));
    const double baseline =
        chartHeight() + style.length(ChartParts::captionGap) + std::round(metrics.ascent());
    if (const auto* const told = pointedColumn()) {
        const QString text = QString::fromStdString(timesHeight() > 0 ? told->figures : told->text());
        painter.setPen(style.colors().primary());
        TabularLine(style.font(ViewStyle::smallText), metrics.elidedText(text, Qt::ElideRight, width()))
            .draw(painter, {0, baseline});
        return;
    }
    ChartParts::drawCaption(
        painter, style, width(), baseline, QString::fromStdString(chart_.title),
        QString::fromStdString(chart_.thresholdText()));
}

} // namespace tarnwick
