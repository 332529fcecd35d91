// The status item's face for panels that show images no wider than high: a figure over small bars.
#pragma once

#include "app/StatusItemController/Painting/MenuBarIcon.h"
#include "platform/ports/StatusItem.h"

#include <QRect>

#include <vector>

namespace tarnwick::SquareFace {

/// What a face shows in a square, from above.
struct Content {
    bool triangle = false; ///< alone
    QString figure{};
    bool bars = false;
    int activeBars = 0;

    friend bool operator==(const Content&, const Content&) = default;
};

/// While the connection is down: the triangle, even if the face has no icon.
[[nodiscard]] Content content(const StatusFace& face);

/// Where the parts lie, in whole pixels of the square, so that edges are sharp at every size.
struct Layout {
    QRect triangle{};
    QRect figure{}; ///< the figure is as high as this, and at most as wide
    std::vector<QRect> bars{};
};

[[nodiscard]] Layout layout(const Content& content, int side);

/// The figure in condensed bold type, fitted into a rectangle: as high as it may be, or lower when it would
/// have to be squeezed too much.
[[nodiscard]] QPainterPath figurePath(const QString& figure, const QRect& room);

/// As a mask: black with opacity.
void draw(QPainter& painter, const Content& content, int side);

} // namespace tarnwick::SquareFace
