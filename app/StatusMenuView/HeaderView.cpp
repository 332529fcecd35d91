#include "app/StatusMenuView/HeaderView.h"

#include "app/StatusItemController/Painting/SignalBars.h"
#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/StatusMenuView/TextTip.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

constexpr double barsWidth = 22;
constexpr double barsHeight = 16;
constexpr double gap = 10; ///< between bars, texts and latency

/// The fonts of one view, with the heights of their lines.
struct HeaderFonts {
    explicit HeaderFonts(const ViewStyle& style)
        : quality(style.font(13, QFont::DemiBold)),
          small(style.font(11)),
          latency(style.font(20, QFont::DemiBold)) {}

    [[nodiscard]] static double height(const QFont& font) { return std::ceil(QFontMetricsF(font).height()); }

    [[nodiscard]] double leftHeight() const { return height(quality) + height(small) + lineGap; }

    [[nodiscard]] double rightHeight() const { return height(latency) + height(small); }

    static constexpr double lineGap = 1;

    QFont quality;
    QFont small;
    QFont latency;
};

/// Draws one line of text; returns the top of the next one.
double drawLine(
    QPainter& painter, const QFont& font, const QColor& color, QPointF topLeft, const QString& text) {
    const QFontMetricsF metrics(font);
    painter.setPen(color);
    TabularLine(font, text).draw(painter, {topLeft.x(), std::round(topLeft.y() + metrics.ascent())});
    return topLeft.y() + HeaderFonts::height(font);
}

} // namespace

HeaderContent HeaderContent::of(const Reading& reading) {
    return {
        .bars = reading.bars,
        .tone = reading.qualityTone,
        .quality = QString::fromStdString(reading.qualityTitle),
        .hostLine = QString::fromStdString(reading.hostLine),
        .latency = QString::fromStdString(reading.latencyText),
        .loss = QString::fromStdString(reading.lossText.value_or("")),
        .isDown = reading.isDown(),
        .isLossy = reading.isLossy(),
    };
}

QString HeaderContent::spokenText() const {
    QString text = quality + ", " + hostLine + ", " + latency;
    if (!loss.isEmpty()) {
        text += ", " + loss;
    }
    return text;
}

HeaderView::HeaderView(QWidget* parent) : ReadAloudWidget(Role::text, parent) {
}

HeaderView::~HeaderView() = default;

void HeaderView::setContent(const HeaderContent& content) {
    if (content == content_) {
        return;
    }
    content_ = content;
    tip_.reset();
    setSpokenText(content.spokenText());
    update();
}

QSize HeaderView::sizeHint() const {
    const HeaderFonts fonts{ViewStyle(*this)};
    // Room for the loss is kept also while there is none, so that nothing below jumps.
    return {0, static_cast<int>(std::max(fonts.leftHeight(), fonts.rightHeight()))};
}

QRectF HeaderView::textRoom(const ViewStyle& style) const {
    const HeaderFonts fonts(style);
    const double latency = TabularLine(fonts.latency, content_.latency).width();
    const double loss = TabularLine(fonts.small, content_.loss).width();
    const double left = style.length(barsWidth) + style.length(gap);
    const double right = width() - std::max(latency, loss) - style.length(gap);
    // Host line and loss stand on one line, the quality above the host.
    return {left, height() - fonts.leftHeight(), right - left, fonts.leftHeight()};
}

void HeaderView::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    const LatencyPalette& colors = style.colors();
    const HeaderFonts fonts(style);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    drawLatency(painter, style);
    const QRectF room = textRoom(style);
    const double barsTop = std::floor(room.top() + (room.height() - style.length(barsHeight)) / 2);
    const QRectF bars(0, barsTop, style.length(barsWidth), style.length(barsHeight));
    SignalBars::draw(painter, bars, barLevels, content_.bars, colors.of(content_.tone), colors.secondary());

    const auto fitted = [&](const QFont& font, const QString& text) {
        return QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, room.width());
    };
    const double y = drawLine(
        painter, fonts.quality, colors.primary(), room.topLeft(), fitted(fonts.quality, content_.quality));
    drawLine(
        painter, fonts.small, colors.secondary(), {room.left(), y + HeaderFonts::lineGap},
        fitted(fonts.small, content_.hostLine));
}

void HeaderView::drawLatency(QPainter& painter, const ViewStyle& style) const {
    const LatencyPalette& colors = style.colors();
    const HeaderFonts fonts(style);
    const double latencyWidth = TabularLine(fonts.latency, content_.latency).width();
    const double lossWidth = TabularLine(fonts.small, content_.loss).width();
    const double lossHeight = content_.loss.isEmpty() ? 0 : HeaderFonts::height(fonts.small);
    const double top = std::floor((height() - HeaderFonts::height(fonts.latency) - lossHeight) / 2);
    const double y = drawLine(
        painter, fonts.latency, content_.isDown ? colors.bad() : colors.primary(),
        {width() - latencyWidth, top}, content_.latency);
    drawLine(
        painter, fonts.small, content_.isLossy ? colors.warnText() : colors.secondary(),
        {width() - lossWidth, y}, content_.loss);
}

bool HeaderView::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::ToolTip:
        showTip();
        return true;
    case QEvent::Leave:
    case QEvent::Hide:
    case QEvent::Resize:
        tip_.reset();
        break;
    default:
        break;
    }
    return ReadAloudWidget::event(event);
}

void HeaderView::showTip() {
    const ViewStyle style(*this);
    const HeaderFonts fonts(style);
    const double room = textRoom(style).width();
    QStringList texts;
    if (QFontMetricsF(fonts.quality).horizontalAdvance(content_.quality) > room) {
        texts << content_.quality;
    }
    if (QFontMetricsF(fonts.small).horizontalAdvance(content_.hostLine) > room) {
        texts << content_.hostLine;
    }
    if (!texts.isEmpty() && !tip_ && parentWidget() != nullptr) {
        tip_ = std::make_unique<TextTip>(*parentWidget(), geometry(), fonts.small, texts.join(u'\n'));
    }
}

} // namespace tarnwick
