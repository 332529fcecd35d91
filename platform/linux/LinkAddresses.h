// Which network interfaces have an address from their network.
#pragma once

#include "platform/linux/NetlinkConversation.h"

#include <optional>
#include <set>

namespace tarnwick::LinkAddresses {

/// The indices of those that have. An address that a machine gives itself for its own cable (169.254.0.0/16,
/// fe80::/10) is none; one that is still being tried is not there yet. The kernel may answer under the lock
/// that drivers hold while they bring an interface up.
[[nodiscard]] std::set<unsigned> interfaces(NetlinkConversation& routing);

/// The interface of which the message tells such an address. `content` is aligned for `ifaddrmsg`.
[[nodiscard]] std::optional<unsigned> parse(Netlink::Bytes content);

} // namespace tarnwick::LinkAddresses
