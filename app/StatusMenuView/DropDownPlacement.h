// Where the drop-down opens.
#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

namespace tarnwick::DropDownPlacement {

/// The drop-down's frame: beside the click, on the side away from the nearest edge of the screen, where the
/// panel is. It lies inside the part of the screen that windows may take. Without a click it is at the upper
/// right.
[[nodiscard]] QRect place(
    std::optional<QPoint> click, QSize size, const QRect& screen, const QRect& available);

} // namespace tarnwick::DropDownPlacement
