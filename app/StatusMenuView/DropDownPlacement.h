// Where the drop-down opens.
#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

namespace tarnwick::DropDownPlacement {

/// The drop-down's frame: beside the click, away from the edge of the screen that the click is nearest to
/// (there the panel is), and wholly inside the part of the screen that windows may take. Without a click it
/// is at the upper right.
[[nodiscard]] QRect place(
    std::optional<QPoint> click, QSize size, const QRect& screen, const QRect& available);

} // namespace tarnwick::DropDownPlacement
