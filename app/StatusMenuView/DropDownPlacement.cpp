#include "app/StatusMenuView/DropDownPlacement.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarnwick::DropDownPlacement {

namespace {

constexpr int gap = 4;             ///< between the drop-down and what is around it
constexpr int usualThickness = 44; ///< of a panel

enum class Edge { top, bottom, left, right };

std::pair<int, Edge> nearestEdge(QPoint point, const QRect& screen) {
    const std::array distances{
        std::pair{point.y() - screen.top(), Edge::top},
        std::pair{screen.bottom() - point.y(), Edge::bottom},
        std::pair{point.x() - screen.left(), Edge::left},
        std::pair{screen.right() - point.x(), Edge::right},
    };
    return *std::ranges::min_element(distances, {}, &std::pair<int, Edge>::first);
}

/// The screen without a panel of a usual size at the edge where the click is.
QRect withoutPanelAt(QPoint click, const QRect& screen) {
    const auto [distance, edge] = nearestEdge(click, screen);
    if (distance >= usualThickness) {
        return screen;
    }
    switch (edge) {
    case Edge::top:
        return screen.adjusted(0, usualThickness, 0, 0);
    case Edge::bottom:
        return screen.adjusted(0, 0, 0, -usualThickness);
    case Edge::left:
        return screen.adjusted(usualThickness, 0, 0, 0);
    case Edge::right:
        break;
    }
    return screen.adjusted(0, 0, -usualThickness, 0);
}

/// Of the panel that was clicked. It lies outside the available area; one that takes no room from windows is
/// at the nearest edge of the screen.
Edge panelEdge(QPoint click, const QRect& screen, const QRect& available) {
    if (click.y() < available.top()) {
        return Edge::top;
    }
    if (click.y() > available.bottom()) {
        return Edge::bottom;
    }
    if (click.x() < available.left()) {
        return Edge::left;
    }
    if (click.x() > available.right()) {
        return Edge::right;
    }
    return nearestEdge(click, screen).second;
}

QPoint beside(QPoint click, QSize size, Edge edge) {
    switch (edge) {
    case Edge::top:
        return {click.x() - size.width() / 2, click.y() + gap};
    case Edge::bottom:
        return {click.x() - size.width() / 2, click.y() - gap - size.height()};
    case Edge::left:
        return {click.x() + gap, click.y() - size.height() / 2};
    case Edge::right:
        break;
    }
    return {click.x() - gap - size.width(), click.y() - size.height() / 2};
}

/// In the corner where the panel that takes room from the screen has its items.
QPoint inCorner(QSize size, const QRect& screen, const QRect& available) {
    const QRect room = DropDownPlacement::room(available);
    const bool isAtTop = available.top() > screen.top();
    const bool isAtBottom = !isAtTop && available.bottom() < screen.bottom();
    const bool isAtRight = available.right() < screen.right();
    const bool isAtLeft = !isAtTop && !isAtBottom && !isAtRight && available.left() > screen.left();
    const bool isLow = isAtBottom || isAtLeft || (isAtRight && !isAtTop);
    return {
        isAtLeft ? room.left() : room.right() - size.width() + 1,
        isLow ? room.bottom() - size.height() + 1 : room.top()};
}

/// Anything larger than the room starts at its upper or left edge.
int clamped(int value, int size, int low, int high) {
    return std::max(low, std::min(value, high - size));
}

QRect inside(const QRect& room, QPoint wanted, QSize size) {
    return {
        QPoint(
            clamped(wanted.x(), size.width(), room.left(), room.right() + 1),
            clamped(wanted.y(), size.height(), room.top(), room.bottom() + 1)),
        size};
}

} // namespace

QRect room(const QRect& available) {
    return available.adjusted(gap, gap, -gap, -gap);
}

QRect place(std::optional<QPoint> click, QSize size, const QRect& screen, const QRect& available) {
    const QPoint wanted = click ? beside(*click, size, panelEdge(*click, screen, available))
                                : inCorner(size, screen, available);
    return inside(room(available), wanted, size);
}

QRect inMiddle(QSize size, const QRect& available) {
    const QSize beside = (available.size() - size) / 2;
    return inside(room(available), available.topLeft() + QPoint(beside.width(), beside.height()), size);
}

QRect inUnits(const QRect& screen, QSize overlay, double ratio) {
    const QSizeF pixels = QSizeF(overlay) * ratio;
    const bool isInPixels = pixels.width() <= screen.width() && pixels.height() <= screen.height();
    return isInPixels ? QRect(screen.topLeft(), screen.size() / ratio) : screen;
}

Overlaid overlaid(std::optional<QPoint> click, const QRect& screen, QSize overlay) {
    if (!click) {
        return {.origin = screen.topLeft(), .available = QRect(screen.topLeft(), overlay)};
    }
    const QSize panels = (screen.size() - overlay).expandedTo({0, 0});
    if (panels.isNull()) {
        return {.origin = screen.topLeft(), .available = withoutPanelAt(*click, screen)};
    }
    const QPoint origin(
        screen.left() + (click->x() < screen.center().x() ? panels.width() : 0),
        screen.top() + (click->y() < screen.center().y() ? panels.height() : 0));
    return {.origin = origin, .available = QRect(origin, overlay)};
}

} // namespace tarnwick::DropDownPlacement
