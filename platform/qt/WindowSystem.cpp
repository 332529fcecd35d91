#include "platform/qt/WindowSystem.h"

#include <QGuiApplication>
#include <qpa/qplatformnativeinterface.h>

namespace tarnwick {

bool WindowSystem::isX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

bool WindowSystem::isWayland() {
    // There are "wayland" and "wayland-egl".
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

wl_display* WindowSystem::waylandDisplay() {
    QPlatformNativeInterface* const native = QGuiApplication::platformNativeInterface();
    return isWayland() && native != nullptr
               ? static_cast<wl_display*>(native->nativeResourceForIntegration("wl_display"))
               : nullptr;
}

} // namespace tarnwick
