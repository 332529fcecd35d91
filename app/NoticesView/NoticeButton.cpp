#include "app/NoticesView/NoticeButton.h"

#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace tarnwick {

namespace {

constexpr double sideInset = 10;
constexpr double topInset = 3;
constexpr double buttonRadius = 5;

QColor faint(QColor color, float opacity) {
    color.setAlphaF(opacity);
    return color;
}

} // namespace

NoticeButton::NoticeButton(const QString& text, QWidget* parent) : KeyButton(text, parent) {
    setAttribute(Qt::WA_Hover); // drawn again when the pointer comes and goes
}

QSize NoticeButton::sizeHint() const {
    const ViewStyle style(*this);
    const QFontMetricsF metrics(style.font(ViewStyle::smallText, QFont::Medium));
    return {
        static_cast<int>(std::ceil(metrics.horizontalAdvance(text()))) + 2 * style.length(sideInset),
        static_cast<int>(std::ceil(metrics.height())) + 2 * style.length(topInset)};
}

void NoticeButton::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    const QColor text = style.colors().primary();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Active, QPalette::Highlight));
    } else {
        painter.setPen(faint(text, 0.22F));
        const float atRest = underMouse() ? 0.12F : 0.05F;
        painter.setBrush(faint(text, isDown() ? 0.2F : atRest));
    }
    const double radius = style.length(buttonRadius);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(hasFocus() ? palette().color(QPalette::Active, QPalette::HighlightedText) : text);
    painter.setFont(style.font(ViewStyle::smallText, QFont::Medium));
    painter.drawText(rect(), Qt::AlignCenter, this->text());
}

} // namespace tarnwick
