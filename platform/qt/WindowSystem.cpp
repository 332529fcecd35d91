#include "platform/qt/WindowSystem.h"

#include <QGuiApplication>

namespace tarnwick {

bool WindowSystem::isX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

bool WindowSystem::isWayland() {
    // There are "wayland" and "wayland-egl".
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace tarnwick
