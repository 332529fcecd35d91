#include "platform/linux/RouteChanges.h"

#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace tarnwick {

namespace {

using Netlink::Bytes;

// Larger than any message that can change the path. One that is cut off counts as a change.
constexpr std::size_t receiveSize = 16UL * 1024;

// About as many as the receive buffer holds.
constexpr int mostRouteMessagesAtOnce = 512;

// The kernel doubles it. Lost messages cost one look-up, which was due anyway.
constexpr int receiveBuffer = 256 * 1024;

constexpr std::array groups{RTNLGRP_LINK,       RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                            RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV4_RULE,   RTNLGRP_IPV6_RULE};

template<class Value>
bool setOption(const Netlink::Socket& socket, int option, Value value) {
    return ::mnl_socket_setsockopt(socket.get(), option, &value, sizeof value) == 0;
}

bool joinAll(const Netlink::Socket& socket) {
    for (const int group : groups) {
        if (!setOption(socket, NETLINK_ADD_MEMBERSHIP, group)) {
            return false;
        }
    }
    // Older kernels have no next hops apart from their routes.
    static_cast<void>(setOption(socket, NETLINK_ADD_MEMBERSHIP, int{RTNLGRP_NEXTHOP}));
    return true;
}

bool prefixCovers(Bytes prefix, unsigned length, Bytes address) {
    constexpr unsigned byteBits = 8;
    const std::size_t wholeBytes = length / byteBits;
    const unsigned remainingBits = length % byteBits;
    const std::size_t size = wholeBytes + (remainingBits > 0 ? 1 : 0);
    if (prefix.size() < size || address.size() < size
        || !std::ranges::equal(prefix.first(wholeBytes), address.first(wholeBytes))) {
        return false;
    }
    const auto difference = [&] {
        return std::to_integer<unsigned>(prefix[wholeBytes] ^ address[wholeBytes]);
    };
    return remainingBits == 0 || difference() >> (byteBits - remainingBits) == 0;
}

/// Only routes to the internet matter. The kernel also sends messages about clones, which it makes for each
/// host that it learns about.
bool leadsToInternet(Bytes content) {
    const auto route = Netlink::structureAt<rtmsg>(content);
    if (!route || (route->rtm_flags & RTM_F_CLONED) != 0) {
        return false;
    }
    Bytes prefix;
    Netlink::forEachAttribute<rtmsg>(content, [&](int type, Bytes value) {
        if (type == RTA_DST) {
            prefix = value;
        }
    });
    return prefixCovers(prefix, route->rtm_dst_len, internetAddress(route->rtm_family));
}

/// Messages about the ports of a bridge look like messages about links.
bool concernsLink(Bytes content) {
    const auto link = Netlink::structureAt<ifinfomsg>(content);
    return link && link->ifi_family == AF_UNSPEC;
}

bool matters(int type, Bytes content) {
    switch (type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
        return concernsLink(content);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
        return leadsToInternet(content);
    case RTM_NEWADDR:
    case RTM_DELADDR:
    case RTM_NEWRULE:
    case RTM_DELRULE:
    case RTM_NEWNEXTHOP:
    case RTM_DELNEXTHOP:
        return true;
    default:
        return false;
    }
}

} // namespace

RouteChanges::RouteChanges() {
    Netlink::Socket socket = Netlink::openSocket();
    if (!socket || ::mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) != 0 || !joinAll(socket)) {
        return;
    }
    const int descriptor = ::mnl_socket_get_fd(socket.get());
    static_cast<void>(::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer));
    socket_ = std::move(socket);
}

bool RouteChanges::take() {
    alignas(nlmsghdr) std::array<std::byte, receiveSize> buffer{};
    bool anyMatters = false;
    for (int message = 0; message < mostRouteMessagesAtOnce; ++message) {
        const ssize_t size = ::mnl_socket_recvfrom(socket_.get(), buffer.data(), buffer.size());
        if (size >= 0) {
            anyMatters = anyMatters || mayChangePath(Bytes(buffer).first(static_cast<std::size_t>(size)));
        } else if (errno == ENOBUFS || errno == ENOSPC) {
            anyMatters = true; // some were lost, or this one was cut off; the others can still be read
        } else if (errno != EINTR) {
            break;
        }
    }
    return anyMatters;
}

bool RouteChanges::mayChangePath(Bytes messages) {
    bool anyMatters = false;
    Netlink::forEachMessage(messages, [&](const nlmsghdr& header, Bytes content) {
        anyMatters = anyMatters || matters(header.nlmsg_type, content);
    });
    return anyMatters;
}

} // namespace tarnwick
