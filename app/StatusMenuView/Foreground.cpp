#include "app/StatusMenuView/Foreground.h"

#include <QGuiApplication>
#include <QWindow>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace tarnwick::Foreground {

namespace {

/// Who asks, in the words of the window managers' protocol: somebody who acts for the user.
constexpr std::uint32_t userAction = 2;

xcb_atom_t atomNamed(xcb_connection_t* connection, std::string_view name) {
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void askWindowManager(xcb_connection_t* connection, xcb_window_t window) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atomNamed(connection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = userAction;
    message.data.data32[1] = XCB_CURRENT_TIME;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(
        connection, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

} // namespace

void take(QWindow& window) {
    window.requestActivate();
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 != nullptr && x11->connection() != nullptr) {
        askWindowManager(x11->connection(), static_cast<xcb_window_t>(window.winId()));
    }
}

} // namespace tarnwick::Foreground
