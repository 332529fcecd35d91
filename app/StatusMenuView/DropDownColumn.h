// The drop-down's content, made to fit the height at hand.
#pragma once

#include <QRect>
#include <QSize>

class QColor;
class QPainter;
class QWidget;

namespace tarnwick {

class MenuItemsView;
class StatusMenuView;

/// The status view above the menu's items. Where there is little room the chart grows lower, then the air
/// between the parts shrinks, and then the column scrolls.
class DropDownColumn {
public:
    /// Both are children of one widget, and outlive this object.
    DropDownColumn(StatusMenuView& status, MenuItemsView& items) : status_(status), items_(items) {}

    /// The size to be given to `layOut`: at most this high.
    [[nodiscard]] QSize sizeWithin(int height);
    /// Places both views in this part of their parent.
    void layOut(const QRect& panel);

    [[nodiscard]] bool canScroll() const { return way() > 0; }

    /// Towards the end, or towards the beginning when it is negative.
    void scroll(int pixels);
    /// Scrolls until this row of the menu is seen. The first row shows all above it, too.
    void reveal(const QWidget& row);

    /// Which part of the column is seen, at the right edge. Draws nothing when all of it is.
    void drawThumb(QPainter& painter, QColor color) const;

private:
    [[nodiscard]] QSize wholeSize() const;
    [[nodiscard]] int way() const; ///< way of scrolling
    void place();
    void clip(QWidget& view) const;

    StatusMenuView& status_;
    MenuItemsView& items_;
    QRect panel_;
    int scrolled_ = 0;
};

} // namespace tarnwick
