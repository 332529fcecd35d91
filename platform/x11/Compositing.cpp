#include "platform/x11/Compositing.h"

#include "platform/x11/X11Connection.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace tarnwick::Compositing {

namespace {

/// A compositor owns a selection that is named after its screen, which is nearly always screen 0.
bool hasCompositor(xcb_connection_t& connection) {
    const xcb_atom_t selection = X11::atomNamed(connection, "_NET_WM_CM_S0");
    if (selection == XCB_ATOM_NONE) {
        return false;
    }
    const X11::ReplyPtr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(&connection, xcb_get_selection_owner(&connection, selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

bool isAvailable() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 != nullptr ? x11->connection() : nullptr;
    return connection == nullptr || hasCompositor(*connection);
}

} // namespace tarnwick::Compositing
