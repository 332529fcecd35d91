// Places on the desktop in pixels, and in the units that the toolkit makes of them on scaled screens.
#pragma once

#include "platform/ports/StatusItem.h"

#include <QPoint>

#include <optional>
#include <utility>

class QScreen;

namespace tarnwick::ScreenPixels {

/// Needs a QGuiApplication with a screen.
[[nodiscard]] ScreenPoint of(const QPoint& point);

/// The screen that a pixel is on and the toolkit's point for it; null when it is on none.
[[nodiscard]] std::pair<QScreen*, QPoint> locate(ScreenPoint pixel);

/// Where the pointer is. Absent on Wayland, where that is known in the program's own windows only.
[[nodiscard]] std::optional<ScreenPoint> pointer();

/// Where a click was. Panels that scale what they draw tell it in units of their own; since the pointer is
/// there, too, it shows which. What fits nowhere near the pointer, as after a key press, stands as it was
/// told.
[[nodiscard]] ScreenPoint clicked(ScreenPoint told, ScreenPoint pointer);

} // namespace tarnwick::ScreenPixels
