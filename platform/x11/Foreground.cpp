#include "platform/x11/Foreground.h"

#include <QGuiApplication>
#include <QWidget>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace tarnwick::Foreground {

namespace {

using EventPtr = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;
using ConnectionPtr = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

constexpr std::uint8_t eventTypeBits = 0x7F;

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

/// The server's time now: an event of our own making brings it. Window managers take a request without a
/// time, or with that of the last event we happened to see, for an old one.
xcb_timestamp_t serverTime(xcb_connection_t* connection, const xcb_screen_t& screen) {
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(
        connection, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_change_property(
        connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(connection);
    // Nothing else was asked for; an error would be the first and only answer.
    if (const EventPtr event{xcb_wait_for_event(connection), &std::free}) {
        if ((event->response_type & eventTypeBits) == XCB_PROPERTY_NOTIFY) {
            return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        }
    }
    return XCB_CURRENT_TIME;
}

void askWindowManager(xcb_window_t window) {
    // Not the toolkit's connection, whose events are not ours to wait for.
    const ConnectionPtr connection(xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return;
    }
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atomNamed(connection.get(), "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = userAction;
    message.data.data32[1] = serverTime(connection.get(), screen);
    xcb_send_event(
        connection.get(), 0, screen.root,
        XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
    xcb_flush(connection.get());
}

} // namespace

void show(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
    if (qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr) {
        askWindowManager(static_cast<xcb_window_t>(window.winId()));
    }
}

} // namespace tarnwick::Foreground
