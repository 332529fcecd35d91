#include "platform/qt/Foreground.h"

#include "platform/qt/WindowSystem.h"
#include "platform/x11/Activation.h"

#include <QWidget>

#include <cstdint>

namespace tarnwick::Foreground {

void show(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
    if (WindowSystem::isX11()) {
        X11::requestActivation(static_cast<std::uint32_t>(window.winId()));
    }
}

} // namespace tarnwick::Foreground
