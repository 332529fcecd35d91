#include "platform/x11/StartupSequence.h"

#include "platform/x11/X11Connection.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <xcb/xcb.h>

namespace tarnwick::X11 {

namespace {

/// In the protocol's quotes, with the characters escaped that would end them.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return result + "\"";
}

/// Made where no program has used the name yet.
xcb_atom_t madeAtom(xcb_connection_t& connection, std::string_view name) {
    const xcb_intern_atom_cookie_t question =
        xcb_intern_atom(&connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const ReplyPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(&connection, question, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// To all programs on the screen that listen, in as many messages as the text needs. The zero at its end is
/// a part of it.
void broadcast(xcb_connection_t& connection, const xcb_screen_t& screen, const std::string& text) {
    const xcb_window_t sender = xcb_generate_id(&connection);
    xcb_create_window(
        &connection, XCB_COPY_FROM_PARENT, sender, screen.root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 8;
    message.window = sender;
    message.type = madeAtom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t next = madeAtom(connection, "_NET_STARTUP_INFO");
    for (std::span<const char> rest(text.c_str(), text.size() + 1); !rest.empty();) {
        const std::size_t size = std::min(rest.size(), std::size(message.data.data8));
        std::ranges::fill(message.data.data8, std::uint8_t{0});
        std::ranges::copy(rest.first(size), std::begin(message.data.data8));
        xcb_send_event(
            &connection, 0, screen.root, XCB_EVENT_MASK_PROPERTY_CHANGE,
            reinterpret_cast<const char*>(&message));
        message.type = next;
        rest = rest.subspan(size);
    }
}

} // namespace

void endStartupSequence(const std::string& id) {
    if (id.empty()) {
        return;
    }
    if (const ConnectionPtr connection = connect()) {
        broadcast(*connection, firstScreen(*connection), "remove: ID=" + quoted(id));
        // Before the connection ends, the server has handled it all.
        const ReplyPtr<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
    }
}

} // namespace tarnwick::X11
