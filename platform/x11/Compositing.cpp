#include "platform/x11/Compositing.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace tarnwick::Compositing {

namespace {

template<class Reply>
using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

/// A compositor owns a selection that is named after its screen; nearly always there is only screen 0.
bool hasCompositor(xcb_connection_t* connection) {
    const std::string name = "_NET_WM_CM_S0";
    const ReplyPtr<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.c_str()),
            nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return false;
    }
    const ReplyPtr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
        &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

bool isAvailable() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 != nullptr ? x11->connection() : nullptr;
    return connection == nullptr || hasCompositor(connection);
}

} // namespace tarnwick::Compositing
