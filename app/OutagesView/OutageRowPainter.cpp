#include "app/OutagesView/OutageRowPainter.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QWidget>

#include <cmath>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double outageInset = 10;
constexpr double outagePadding = 6;
constexpr double outageLineGap = 2;
constexpr double outageMark = 4; ///< width of the mark in the color of the outage
constexpr double outageMarkGap = 10;
constexpr double outageColumnGap = 18;
constexpr double outageRadius = 6; ///< of the ground of a selected row

/// Of the mark's height: what was only poor is less than what was down.
constexpr double poorShare = 0.5;

// The widest texts that are usual, so that columns stand below each other.
const char* const widestTime = "2000-00-00 00:00:00";
const char* const widestLength = "down for 00 min 00 s so far";

QString textOf(const QModelIndex& index, OutageRowPainter::Part part) {
    return index.data(part).toString();
}

double lineHeightOf(const QFont& font) {
    return std::ceil(QFontMetricsF(font).height());
}

bool isSelected(const QStyleOptionViewItem& option) {
    return option.state.testFlag(QStyle::State_Selected);
}

QColor selectionColor(const QStyleOptionViewItem& option, QPalette::ColorRole role) {
    const bool isActive = option.state.testFlag(QStyle::State_Active);
    return option.palette.color(isActive ? QPalette::Active : QPalette::Inactive, role);
}

/// The colors of a row.
struct RowColors {
    QColor text;
    QColor quiet;
    QColor mark;

    RowColors(const QStyleOptionViewItem& option, const LatencyPalette& colors, bool wasDown)
        : text(colors.primary()), quiet(colors.secondary()), mark(wasDown ? colors.bad() : colors.warn()) {
        if (isSelected(option)) {
            text = quiet = mark = selectionColor(option, QPalette::HighlightedText);
        }
    }
};

/// Of a selected row, or of the one at which the keyboard is.
void drawRowGround(QPainter& painter, const QStyleOptionViewItem& option, double radius) {
    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
    if (!isSelected(option) && !hasFocus) {
        return;
    }
    const QColor color = selectionColor(option, QPalette::Highlight);
    painter.setPen(hasFocus ? QPen(color, 2) : QPen(Qt::NoPen));
    painter.setBrush(isSelected(option) ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), radius, radius);
}

} // namespace

QSize OutageRowPainter::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const {
    const ViewStyle style(*option.widget);
    const double lines = lineHeightOf(style.font(ViewStyle::usualText)) + style.length(outageLineGap)
                         + lineHeightOf(style.font(ViewStyle::smallText));
    return {0, static_cast<int>(lines) + 2 * style.length(outagePadding)};
}

void OutageRowPainter::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ViewStyle style(*option.widget);
    const bool wasDown = index.data(isOutage).toBool();
    const RowColors colors(option, style.colors(), wasDown);
    const QRectF row(option.rect);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setLayoutDirection(Qt::LeftToRight);
    drawRowGround(*painter, option, style.length(outageRadius));
    const QFont font = style.font(ViewStyle::usualText);
    const QFont small = style.font(ViewStyle::smallText);
    const double top = row.top() + style.length(outagePadding);
    const double height = row.height() - 2 * style.length(outagePadding);
    double left = row.left() + style.length(outageInset);
    const double markHeight = wasDown ? height : height * poorShare;
    painter->setPen(Qt::NoPen);
    painter->setBrush(colors.mark);
    painter->drawRoundedRect(
        QRectF(left, top + height - markHeight, style.length(outageMark), markHeight), 2, 2);
    left += style.length(outageMark) + style.length(outageMarkGap);

    const double baseline = top + std::round(QFontMetricsF(font).ascent());
    const double betweenParts = style.length(outageColumnGap);
    const auto draw = [&](double x, const QString& text) {
        TabularLine(font, text).draw(*painter, {x, baseline});
    };
    painter->setPen(colors.text);
    draw(left, textOf(index, when));
    const double lengthLeft = left + TabularLine(font, widestTime).width() + betweenParts;
    draw(lengthLeft, (wasDown ? "down for " : "poor for ") + textOf(index, howLong));
    const double blameLeft = lengthLeft + TabularLine(font, widestLength).width() + betweenParts;
    painter->setFont(font);
    draw(blameLeft, textOf(index, blame));

    const double room = row.right() - style.length(outageInset) - left;
    const double below =
        row.bottom() - style.length(outagePadding) - std::ceil(QFontMetricsF(small).descent());
    painter->setFont(small);
    painter->setPen(colors.quiet);
    painter->drawText(
        QPointF(left, below), QFontMetricsF(small).elidedText(textOf(index, evidence), Qt::ElideRight, room));
    painter->restore();
}

} // namespace tarnwick
