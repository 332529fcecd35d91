// Places on the desktop as panels tell them, and in the units that the toolkit makes of them on scaled
// screens: on X11 panels tell pixels, on Wayland units.
#pragma once

#include "platform/ports/StatusItem.h"

#include <QPoint>
#include <QRect>

#include <optional>
#include <utility>

class QScreen;

namespace tarnwick::ScreenPixels {

/// Needs a QGuiApplication with a screen.
[[nodiscard]] ScreenPoint of(const QPoint& point);

/// The screen that a pixel is on and the toolkit's point for it; null when it is on none.
[[nodiscard]] std::pair<QScreen*, QPoint> locate(ScreenPoint pixel);

/// Where the pointer is. Absent on Wayland, which tells it only inside the program's own windows.
[[nodiscard]] std::optional<ScreenPoint> pointer();

/// Where a click was, in pixels. A panel that scales what it draws may tell the place in units of its own,
/// counted from the desktop's origin or from that of its monitor. If one of the usual scales brings the place
/// near the pointer, it is applied. If none does, as after a key press, `told` is returned. `origin` is that
/// of the pointer's monitor.
[[nodiscard]] ScreenPoint clicked(ScreenPoint told, ScreenPoint pointer, ScreenPoint origin);

/// The part of a screen that panels leave to windows, in the toolkit's units. On X11 it asks the server.
[[nodiscard]] QRect available(const QScreen& screen);

} // namespace tarnwick::ScreenPixels
