// Whether a program on an X11 display combines windows, so that they can be translucent.
#pragma once

struct xcb_connection_t;

namespace tarnwick::X11 {

/// Asks the display, since a compositor may come and go.
[[nodiscard]] bool hasCompositor(xcb_connection_t& connection);

} // namespace tarnwick::X11
