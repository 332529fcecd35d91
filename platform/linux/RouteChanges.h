// Finds out from the kernel's messages about links, addresses, routes and rules whether the path to the
// internet may have changed.
#pragma once

#include "platform/linux/Netlink.h"

namespace tarnwick {

/// The messages only say that something changed: one about a link can mean that whole tables of routes are
/// gone. Never blocks. Not open where the system offers no such messages.
class RouteChanges {
public:
    RouteChanges();

    [[nodiscard]] bool isOpen() const { return socket_ != nullptr; }

    [[nodiscard]] int descriptor() const { return ::mnl_socket_get_fd(socket_.get()); }

    /// Reads the waiting messages, but not all of a flood. True when one of them may mean a changed path, or
    /// when messages were lost.
    [[nodiscard]] bool take();

    /// Whether any of the received `messages` may have changed the path.
    [[nodiscard]] static bool mayChangePath(Netlink::Bytes messages);

private:
    Netlink::Socket socket_;
};

} // namespace tarnwick
