#include "platform/x11/Activation.h"

#include "platform/x11/X11Connection.h"

#include <xcb/xcb.h>

namespace tarnwick::X11 {

namespace {

/// The protocol's value for a request that a program makes on behalf of the user.
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
    // The server handles requests in their order: with the reply to a later one, the event has come. Waiting
    // for the event would not end if the server did not send it.
    const ReplyPtr<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(&connection, xcb_get_input_focus(&connection), nullptr));
    // This connection asked for nothing else, so the first event is this one or an error.
    const ReplyPtr<xcb_generic_event_t> event(xcb_poll_for_event(&connection));
    if (event && eventType(event->response_type) == XCB_PROPERTY_NOTIFY) {
        return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
    }
    return XCB_CURRENT_TIME;
}

} // namespace

void requestActivation(std::uint32_t window) {
    const ConnectionPtr connection = connect();
    if (!connection) {
        return;
    }
    const xcb_atom_t request = atomNamed(*connection, "_NET_ACTIVE_WINDOW");
    if (request == XCB_ATOM_NONE) {
        return;
    }
    const xcb_screen_t& screen = firstScreen(*connection);
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

} // namespace tarnwick::X11
