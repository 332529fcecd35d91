// What shows this program's windows.
#pragma once

struct wl_display;

namespace tarnwick::WindowSystem {

// All need a QGuiApplication. The first two are false without a display.

[[nodiscard]] bool isX11();
[[nodiscard]] bool isWayland();

/// The toolkit's connection to the compositor. Null on other window systems.
[[nodiscard]] wl_display* waylandDisplay();

} // namespace tarnwick::WindowSystem
