// Whether windows can be translucent here.
#pragma once

namespace tarnwick::Compositing {

/// Asks the display each time, since a compositor may come and go. True on Wayland.
[[nodiscard]] bool isAvailable();

} // namespace tarnwick::Compositing
