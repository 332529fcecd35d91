// What the kernel knows of a neighbor's hardware address.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "platform/linux/NetlinkConversation.h"

#include <optional>

namespace tarnwick {

struct NeighborEntry {
    /// Seconds for which the kernel may ask without an answer before that counts. Neighbors answer in
    /// milliseconds, a telephone that sleeps in some tenths of a second.
    static constexpr double patience = 1;

    unsigned state = 0;     ///< NUD_REACHABLE, for example
    double sinceChange = 0; ///< seconds for which it has been in this state

    /// Nothing where the kernel knows of no such neighbor. `address` is an IPv4 or IPv6 address.
    [[nodiscard]] static std::optional<NeighborEntry> of(
        NetlinkConversation& routing, unsigned interface, Netlink::Bytes address);

    /// Reads the content of a message about a neighbor. `content` is aligned for `ndmsg`.
    [[nodiscard]] static std::optional<NeighborEntry> parse(Netlink::Bytes content);
};

/// `before` is what the last look at the same neighbor said. While packets are sent to one that is gone, the
/// kernel asks for three seconds, fails, and asks again with the next packet: it stays failed then until it
/// answers. A reachable one may have gone up to 45 s ago, after which the kernel asks for it again.
[[nodiscard]] NeighborState neighborState(const std::optional<NeighborEntry>& entry, NeighborState before);

} // namespace tarnwick
