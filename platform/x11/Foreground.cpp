#include "platform/x11/Foreground.h"

#include "platform/x11/X11Connection.h"

#include <QGuiApplication>
#include <QWidget>

#include <cstdint>
#include <xcb/xcb.h>

namespace tarnwick::Foreground {

namespace {

/// Where a request comes from, in the window managers' protocol: a program that acts for the user.
constexpr std::uint32_t fromUser = 2;

/// The server's present time, taken from an event that we cause. Window managers take a request without a
/// time, or with that of an earlier event, for an old one.
xcb_timestamp_t serverTime(xcb_connection_t& connection, const xcb_screen_t& screen) {
    const xcb_window_t window = xcb_generate_id(&connection);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(
        &connection, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_change_property(
        &connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(&connection);
    // This connection asked for nothing else, so the first event is this one or an error.
    const X11::ReplyPtr<xcb_generic_event_t> event(xcb_wait_for_event(&connection));
    if (event && X11::eventType(event->response_type) == XCB_PROPERTY_NOTIFY) {
        return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
    }
    return XCB_CURRENT_TIME;
}

/// Does nothing where no window manager knows the request.
void askWindowManager(xcb_window_t window) {
    const X11::ConnectionPtr connection = X11::connect();
    if (!connection) {
        return;
    }
    const xcb_atom_t request = X11::atomNamed(*connection, "_NET_ACTIVE_WINDOW");
    if (request == XCB_ATOM_NONE) {
        return;
    }
    const xcb_screen_t& screen = X11::firstScreen(*connection);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = request;
    message.data.data32[0] = fromUser;
    message.data.data32[1] = serverTime(*connection, screen);
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
