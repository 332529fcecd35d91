#include "platform/x11/Compositor.h"

#include "platform/x11/X11Connection.h"

#include <xcb/xcb.h>

namespace tarnwick::X11 {

bool hasCompositor(xcb_connection_t& connection) {
    // A compositor owns a selection that is named after its screen, which is nearly always screen 0.
    const xcb_atom_t selection = atomNamed(connection, "_NET_WM_CM_S0");
    if (selection == XCB_ATOM_NONE) {
        return false;
    }
    const ReplyPtr<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(&connection, xcb_get_selection_owner(&connection, selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace tarnwick::X11
