#include "app/StatusMenuView/DropDownColumn.h"

#include "app/StatusMenuView/MenuItemsView.h"
#include "app/StatusMenuView/MenuRow.h"
#include "app/StatusMenuView/StatusMenuView.h"

#include <QPainter>
#include <QRegion>

#include <algorithm>

namespace tarnwick {

namespace {

constexpr int paddingAboveContent = 4;
constexpr int thumbWidth = 3;
constexpr int thumbInset = 2;   ///< from the right edge
constexpr int thumbMargin = 10; ///< from the rounded corners
constexpr float thumbOpacity = 0.4F;

} // namespace

QSize DropDownColumn::wholeSize() const {
    const QSize status = status_.sizeHint();
    const QSize items = items_.sizeHint();
    return {std::max(status.width(), items.width()), paddingAboveContent + status.height() + items.height()};
}

QSize DropDownColumn::sizeWithin(int height) {
    for (const bool isTight : {false, true}) {
        status_.setTight(isTight);
        items_.setTight(isTight);
        status_.lowerChart(0);
        status_.lowerChart(wholeSize().height() - height);
        if (wholeSize().height() <= height) {
            break;
        }
    }
    const QSize whole = wholeSize();
    return {whole.width(), std::min(whole.height(), height)};
}

void DropDownColumn::layOut(const QRect& panel) {
    panel_ = panel;
    place();
}

int DropDownColumn::way() const {
    return std::max(0, wholeSize().height() - panel_.height());
}

void DropDownColumn::place() {
    scrolled_ = std::clamp(scrolled_, 0, way());
    const int top = panel_.top() + paddingAboveContent - scrolled_;
    const int statusHeight = status_.sizeHint().height();
    status_.setGeometry(panel_.left(), top, panel_.width(), statusHeight);
    items_.setGeometry(panel_.left(), top + statusHeight, panel_.width(), items_.sizeHint().height());
    clip(status_);
    clip(items_);
}

void DropDownColumn::clip(QWidget& view) const {
    if (!canScroll()) {
        view.clearMask();
        return;
    }
    const QRect seen = panel_.adjusted(1, 1, -1, -1).translated(-view.pos()) & view.rect();
    // An empty mask would be none.
    view.setMask(seen.isEmpty() ? QRegion(-1, -1, 1, 1) : QRegion(seen));
}

void DropDownColumn::scroll(int pixels) {
    scrolled_ += pixels;
    place();
}

void DropDownColumn::reveal(const QWidget& row) {
    const auto rows = items_.visibleRows();
    if (!rows.empty() && rows.front() == &row) {
        scroll(-scrolled_);
        return;
    }
    const int top = items_.y() + row.y();
    const int above = panel_.top() - top;
    const int below = top + row.height() + thumbMargin - (panel_.bottom() + 1);
    if (above > 0) {
        scroll(-above);
    } else if (below > 0) {
        scroll(below);
    }
}

void DropDownColumn::drawThumb(QPainter& painter, QColor color) const {
    if (!canScroll()) {
        return;
    }
    const double track = panel_.height() - 2 * thumbMargin;
    const double whole = wholeSize().height();
    const QRectF thumb(
        panel_.right() + 1 - thumbInset - thumbWidth, panel_.top() + thumbMargin + track * scrolled_ / whole,
        thumbWidth, track * panel_.height() / whole);
    color.setAlphaF(thumbOpacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(thumb, thumbWidth / 2.0, thumbWidth / 2.0);
}

} // namespace tarnwick
