#include "platform/qt/Compositing.h"

#include "platform/x11/Compositor.h"

#include <QGuiApplication>

namespace tarnwick::Compositing {

bool isAvailable() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 != nullptr ? x11->connection() : nullptr;
    return connection == nullptr || X11::hasCompositor(*connection);
}

} // namespace tarnwick::Compositing
