#include "platform/x11/X11Connection.h"

#include <utility>
#include <xcb/xcb.h>

namespace tarnwick::X11 {

void Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

ConnectionPtr connect() {
    ConnectionPtr connection(xcb_connect(nullptr, nullptr));
    // Even a failed one is an object, to be given back.
    return xcb_connection_has_error(connection.get()) == 0 ? std::move(connection) : nullptr;
}

const xcb_screen_t& firstScreen(xcb_connection_t& connection) {
    return *xcb_setup_roots_iterator(xcb_get_setup(&connection)).data;
}

std::uint32_t atomNamed(xcb_connection_t& connection, std::string_view name) {
    constexpr std::uint8_t onlyIfItExists = 1;
    const xcb_intern_atom_cookie_t question =
        xcb_intern_atom(&connection, onlyIfItExists, static_cast<std::uint16_t>(name.size()), name.data());
    const ReplyPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(&connection, question, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace tarnwick::X11
