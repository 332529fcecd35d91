// What shows this program's windows.
#pragma once

namespace tarnwick::WindowSystem {

// Both need a QGuiApplication, and are false without a display.

[[nodiscard]] bool isX11();
[[nodiscard]] bool isWayland();

} // namespace tarnwick::WindowSystem
