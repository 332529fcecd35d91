// The kernel's messages about links, addresses, routes and rules, read for one question: may the path to the
// internet have changed?
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

    /// Takes the waiting messages, of a flood a bounded number. True when any of them may have changed the
    /// path, and when messages were lost.
    [[nodiscard]] bool take();

    /// Whether any of the received `messages` may have changed the path.
    [[nodiscard]] static bool mayChangePath(Netlink::Bytes messages);

private:
    Netlink::Socket socket_;
};

} // namespace tarnwick
