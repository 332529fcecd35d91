#include "app/StatusMenuView/MenuRow.h"

#include "app/StatusMenuView/MenuIcons.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace tarnwick {

namespace {

constexpr double outerMargin = 6; ///< of the highlight, from the sides of the window
constexpr double innerMargin = 8; ///< of the content, from the sides of the highlight
constexpr double iconSide = 16;
constexpr double iconGap = 8;
constexpr double verticalPadding = 4;
constexpr double tightPadding = 1;
constexpr double rowCornerRadius = 5;

} // namespace

QKeySequence shortcutKeys(char shortcut) {
    if (shortcut == 0) {
        return {};
    }
    const auto key = static_cast<int>(QChar::fromLatin1(shortcut).toUpper().unicode());
    return {Qt::ControlModifier | Qt::Key(key)};
}

QString shortcutText(char shortcut) {
    return shortcutKeys(shortcut).toString(QKeySequence::NativeText);
}

MenuRow::MenuRow(QWidget* parent) : KeyButton(parent) {
    setFlat(true);
    setMouseTracking(true);
    QObject::connect(this, &QPushButton::clicked, this, [this] {
        if (onChoose) {
            onChoose();
        }
    });
}

void MenuRow::setItem(const MenuItem& item) {
    if (item == item_) {
        return;
    }
    item_ = item;
    setText(QString::fromStdString(item.title).replace(u'&', QLatin1String("&&")));
    setAccessibleName(QString::fromStdString(item.title));
    setAccessibleDescription(shortcutText(item.shortcut));
    setEnabled(item.enabled);
    update();
}

void MenuRow::setShowsMnemonic(bool shows) {
    if (shows != showsMnemonic_) {
        showsMnemonic_ = shows;
        update();
    }
}

QSize MenuRow::sizeHint() const {
    const ViewStyle style(*this);
    const QFontMetricsF metrics(style.font(ViewStyle::usualText));
    const double text = std::ceil(metrics.height());
    const double side = 2 * style.length(outerMargin + innerMargin) + style.length(iconSide + iconGap);
    const double width = side + metrics.horizontalAdvance(QString::fromStdString(item_.title))
                         + metrics.horizontalAdvance("    " + shortcutText(item_.shortcut));
    return {
        static_cast<int>(std::ceil(width)),
        static_cast<int>(std::max<double>(text, style.length(iconSide)))
            + 2 * style.length(isTight_ ? tightPadding : verticalPadding)};
}

void MenuRow::enterEvent(QEnterEvent* /*event*/) {
    if (isEnabled()) {
        setFocus(Qt::MouseFocusReason);
    }
}

void MenuRow::leaveEvent(QEvent* /*event*/) {
    clearFocus();
}

void MenuRow::drawTitle(QPainter& painter, double left, double baseline) const {
    const QString title = QString::fromStdString(item_.title);
    painter.drawText(QPointF(left, baseline), title);
    const qsizetype at = title.indexOf(QChar::fromLatin1(item_.mnemonic), 0, Qt::CaseInsensitive);
    if (!showsMnemonic_ || item_.mnemonic == 0 || at < 0) {
        return;
    }
    const QFontMetricsF metrics(painter.font());
    const double x = left + metrics.horizontalAdvance(title.left(at));
    const double width = metrics.horizontalAdvance(title[at]);
    painter.fillRect(
        QRectF(x, std::round(baseline + metrics.underlinePos()), width, 1), painter.pen().color());
}

void MenuRow::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int outer = style.length(outerMargin);
    const bool isHighlighted = hasFocus() && isEnabled();
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const QColor color =
        palette().color(group, isHighlighted ? QPalette::HighlightedText : QPalette::WindowText);
    if (isHighlighted) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Active, QPalette::Highlight));
        painter.drawRoundedRect(rect().adjusted(outer, 0, -outer, 0), rowCornerRadius, rowCornerRadius);
    }

    double left = outer + style.length(innerMargin);
    const int side = style.length(iconSide);
    painter.drawPixmap(
        QPointF(left, std::floor((height() - side) / 2.0)),
        menuIcon(QString::fromStdString(item_.iconName), side, color, devicePixelRatioF()));
    left += side + style.length(iconGap);

    painter.setFont(style.font(ViewStyle::usualText));
    const QFontMetricsF metrics(painter.font());
    const double baseline = std::round((height() - metrics.height()) / 2 + metrics.ascent());
    painter.setPen(color);
    drawTitle(painter, left, baseline);

    const QString keys = shortcutText(item_.shortcut);
    const double keysWidth = metrics.horizontalAdvance(keys);
    QColor quiet = color;
    quiet.setAlphaF(color.alphaF() * (isHighlighted ? 0.85F : 0.62F));
    painter.setPen(quiet);
    painter.drawText(QPointF(width() - outer - style.length(innerMargin) - keysWidth, baseline), keys);
}

} // namespace tarnwick
