#include "app/StatusMenuView/DropDownPlacement.h"

#include <algorithm>
#include <array>

namespace tarnwick::DropDownPlacement {

namespace {

constexpr int gap = 4; ///< between the drop-down and what is around it

enum class Edge { top, bottom, left, right };

Edge nearestEdge(QPoint point, const QRect& screen) {
    const std::array distances{
        std::pair{point.y() - screen.top(), Edge::top},
        std::pair{screen.bottom() - point.y(), Edge::bottom},
        std::pair{point.x() - screen.left(), Edge::left},
        std::pair{screen.right() - point.x(), Edge::right},
    };
    return std::ranges::min_element(distances, {}, &std::pair<int, Edge>::first)->second;
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

/// Anything larger than the room starts at its upper or left edge.
int clamped(int value, int size, int low, int high) {
    return std::max(low, std::min(value, high - size));
}

} // namespace

QRect place(std::optional<QPoint> click, QSize size, const QRect& screen, const QRect& available) {
    const QRect room = available.adjusted(gap, gap, -gap, -gap);
    const QPoint wanted = click ? beside(*click, size, nearestEdge(*click, screen))
                                : QPoint(room.right() - size.width() + 1, room.top());
    return {
        QPoint(
            clamped(wanted.x(), size.width(), room.left(), room.right() + 1),
            clamped(wanted.y(), size.height(), room.top(), room.bottom() + 1)),
        size};
}

} // namespace tarnwick::DropDownPlacement
