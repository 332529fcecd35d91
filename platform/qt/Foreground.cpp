#include "platform/qt/Foreground.h"

#include "platform/x11/Activation.h"

#include <QGuiApplication>
#include <QWidget>

#include <cstdint>

namespace tarnwick::Foreground {

void show(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
    if (qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr) {
        X11::requestActivation(static_cast<std::uint32_t>(window.winId()));
    }
}

} // namespace tarnwick::Foreground
