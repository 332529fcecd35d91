// Tells a Wayland desktop that a program has started.
#pragma once

#include <string>

struct wl_display;

namespace tarnwick::Wayland {

/// `token` is the one that the program was started with, which brings no window to the front any more. Only
/// GNOME's compositor can be told; elsewhere nothing happens.
void endStartupSequence(wl_display& display, const std::string& token);

} // namespace tarnwick::Wayland
