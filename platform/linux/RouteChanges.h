// What the kernel tells of links, addresses, routes and rules, read for one question: may the way to the
// world have changed?
#pragma once

#include "core/FileDescriptor.h"
#include "platform/linux/Netlink.h"

namespace tarnwick {

/// The messages say only that something changed: whole tables of routes vanish with one message about a link.
/// Never blocks. Not open where the system offers no such messages.
class RouteChanges {
public:
    RouteChanges();

    [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }

    [[nodiscard]] int descriptor() const { return socket_.get(); }

    /// Takes what waits, of a flood a bounded part. True when any of it may have changed the way to the
    /// world, and when messages were lost.
    [[nodiscard]] bool take();

    /// The same of messages as they were received.
    [[nodiscard]] static bool mayChangePath(Netlink::Bytes messages);

private:
    FileDescriptor socket_;
};

} // namespace tarnwick
