#include "app/StatusMenuView/TextTip.h"

#include <QPainter>

namespace tarnwick {

namespace {

constexpr int tipPadding = 6;
constexpr int tipGap = 4; ///< from what it belongs to
constexpr double tipRadius = 4;

} // namespace

TextTip::TextTip(QWidget& parent, const QRect& place, const QFont& font, const QString& text)
    : QWidget(&parent), text_(text), lines_(font, text, place.width() - 2 * tipPadding) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setGeometry(place.left(), place.bottom() + 1 + tipGap, place.width(), lines_.height() + 2 * tipPadding);
    raise();
    show();
}

void TextTip::paintEvent(QPaintEvent* /*event*/) {
    QColor border = palette().color(QPalette::Text);
    border.setAlphaF(0.3F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(palette().color(QPalette::Base));
    painter.setPen(border);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), tipRadius, tipRadius);
    painter.setPen(palette().color(QPalette::Text));
    lines_.draw(painter, QPointF(tipPadding, tipPadding));
}

} // namespace tarnwick
