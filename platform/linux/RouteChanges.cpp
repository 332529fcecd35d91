#include "platform/linux/RouteChanges.h"

#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace tarnwick {

namespace {

using Netlink::Bytes;

// Larger than any message that matters; one that is cut off counts as one that matters.
constexpr std::size_t receiveSize = 16UL * 1024;

// As many as the receive buffer holds, more or less.
constexpr int mostMessagesAtOnce = 512;

// The kernel doubles it. What does not fit is lost, which costs one look-up that would be due anyway.
constexpr int receiveBuffer = 256 * 1024;

constexpr std::array groups{RTNLGRP_LINK,       RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                            RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV4_RULE,   RTNLGRP_IPV6_RULE};

bool join(const FileDescriptor& socket, int group) {
    return ::setsockopt(socket.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) == 0;
}

bool joinAll(const FileDescriptor& socket) {
    for (const int group : groups) {
        if (!join(socket, group)) {
            return false;
        }
    }
    // Older kernels have no next hops apart from their routes.
    static_cast<void>(join(socket, RTNLGRP_NEXTHOP));
    return true;
}

bool bindToKernelsChoice(const FileDescriptor& socket) {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
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

/// A route matters when it leads to the world, or led there. Each host that is heard of may make a clone;
/// what is cloned is told of as well.
bool leadsToWorld(Bytes content) {
    const auto route = Netlink::structureAt<rtmsg>(content);
    if (!route || (route->rtm_flags & RTM_F_CLONED) != 0) {
        return false;
    }
    Bytes prefix;
    Bytes rest = Netlink::attributesBehind<rtmsg>(content);
    while (const auto attribute = Netlink::takeBlock<rtattr>(rest)) {
        if (attribute->header.rta_type == RTA_DST) {
            prefix = attribute->content;
        }
    }
    return prefixCovers(prefix, route->rtm_dst_len, worldAddress(route->rtm_family));
}

/// A bridge tells of its ports in messages that look like those about links.
bool concernsLink(Bytes content) {
    const auto link = Netlink::structureAt<ifinfomsg>(content);
    return link && link->ifi_family == AF_UNSPEC;
}

bool matters(const Netlink::Message& message) {
    switch (message.header.nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
        return concernsLink(message.content);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
        return leadsToWorld(message.content);
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
    FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    if (!socket.isOpen() || !bindToKernelsChoice(socket) || !joinAll(socket)) {
        return;
    }
    static_cast<void>(
        ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer));
    socket_ = std::move(socket);
}

bool RouteChanges::take() {
    std::array<std::byte, receiveSize> buffer{};
    bool anyMatters = false;
    for (int message = 0; message < mostMessagesAtOnce; ++message) {
        const ssize_t size = ::recv(socket_.get(), buffer.data(), buffer.size(), MSG_TRUNC);
        if (size >= 0) {
            const auto received = static_cast<std::size_t>(size);
            anyMatters =
                anyMatters || received > buffer.size() || mayChangePath(Bytes(buffer).first(received));
        } else if (errno == ENOBUFS) {
            anyMatters = true; // some were lost; the others can still be read
        } else if (errno != EINTR) {
            break;
        }
    }
    return anyMatters;
}

bool RouteChanges::mayChangePath(Bytes messages) {
    while (const auto message = Netlink::takeBlock<nlmsghdr>(messages)) {
        if (matters(*message)) {
            return true;
        }
    }
    return false;
}

} // namespace tarnwick
