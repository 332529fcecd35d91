#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <unistd.h>

namespace tarnwick {

namespace {

using Netlink::Bytes;

constexpr std::size_t questionSize = 128;
constexpr std::size_t answerSize = 8UL * 1024;

template<std::size_t Size>
constexpr std::array<std::byte, Size> bytes(const std::array<unsigned char, Size>& values) {
    std::array<std::byte, Size> result{};
    std::ranges::transform(values, result.begin(), [](unsigned char value) { return std::byte{value}; });
    return result;
}

constexpr auto internet4 = bytes<4>({203, 0, 113, 9});
constexpr auto internet6 = bytes<16>({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9});

bool hasCarrier(unsigned flags) {
    return (flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) == 0;
}

/// The router's address in such an attribute. Empty in attributes of other types.
Bytes gatewayIn(int type, Bytes value) {
    switch (type) {
    case RTA_GATEWAY:
        return value;
    case RTA_VIA: // of the other family, named before it
        return value.subspan(std::min(sizeof(rtvia), value.size()));
    default:
        return {};
    }
}

std::vector<std::byte> gatewayOf(Bytes hop) {
    Bytes gateway;
    Netlink::forEachAttribute<rtnexthop>(hop, [&](int type, Bytes value) {
        if (const Bytes found = gatewayIn(type, value); !found.empty()) {
            gateway = found;
        }
    });
    return {gateway.begin(), gateway.end()};
}

/// Sorted, because the kernel may list the equal hops of a multipath route in any order.
std::vector<InternetRoute::NextHop> parseNextHops(Bytes rest) {
    std::vector<InternetRoute::NextHop> hops;
    while (const auto hop = Netlink::structureAt<rtnexthop>(rest)) {
        if (hop->rtnh_len < sizeof(rtnexthop) || hop->rtnh_len > rest.size()) {
            break;
        }
        hops.push_back(
            {static_cast<unsigned>(hop->rtnh_ifindex), hasCarrier(hop->rtnh_flags),
             gatewayOf(rest.first(hop->rtnh_len))});
        rest = rest.subspan(std::min<std::size_t>(MNL_ALIGN(hop->rtnh_len), rest.size()));
    }
    std::ranges::sort(
        hops, {}, [](const InternetRoute::NextHop& hop) { return std::tie(hop.interface, hop.gateway); });
    return hops;
}

std::optional<double> secondsLeft(Bytes value) {
    static const auto ticksPerSecond = static_cast<double>(::sysconf(_SC_CLK_TCK));
    const auto cached = Netlink::structureAt<rta_cacheinfo>(value);
    return cached && cached->rta_expires > 0 ? std::optional(cached->rta_expires / ticksPerSecond)
                                             : std::nullopt;
}

} // namespace

Bytes internetAddress(int family) {
    switch (family) {
    case AF_INET:
        return internet4;
    case AF_INET6:
        return internet6;
    default:
        return {};
    }
}

std::optional<InternetRoute> RouteLookup::toInternet(int family, unsigned interface) {
    // First the route with all its next hops, then the one next hop that a packet would take.
    std::optional<InternetRoute> route = ask(family, interface, RTM_F_FIB_MATCH);
    if (route && route->nextHops.empty() && route->hasNumberedHops) {
        route = ask(family, interface, 0);
    }
    return route;
}

std::optional<InternetRoute> RouteLookup::ask(int family, unsigned interface, unsigned flags) {
    if (!socket_ || !send(family, interface, flags)) {
        return std::nullopt;
    }
    alignas(nlmsghdr) std::array<std::byte, answerSize> buffer{};
    const ssize_t size = ::mnl_socket_recvfrom(socket_.get(), buffer.data(), buffer.size());
    std::optional<InternetRoute> route;
    Netlink::forEachMessage(
        Bytes(buffer).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0))),
        [&](const nlmsghdr& header, Bytes content) {
            if (header.nlmsg_seq == sequence_) {
                // Any error (unreachable, prohibited, no such family) means that there is no route.
                route = header.nlmsg_type == RTM_NEWROUTE ? parseRoute(content) : InternetRoute{};
            }
        });
    return route;
}

bool RouteLookup::send(int family, unsigned interface, unsigned flags) {
    alignas(nlmsghdr) std::array<std::byte, questionSize> buffer{};
    nlmsghdr* const question = ::mnl_nlmsg_put_header(buffer.data());
    question->nlmsg_type = RTM_GETROUTE;
    question->nlmsg_flags = NLM_F_REQUEST;
    question->nlmsg_seq = ++sequence_;
    auto* const route = static_cast<rtmsg*>(::mnl_nlmsg_put_extra_header(question, sizeof(rtmsg)));
    const Bytes address = internetAddress(family);
    route->rtm_family = static_cast<unsigned char>(family);
    route->rtm_dst_len = static_cast<unsigned char>(address.size() * 8);
    route->rtm_flags = flags;
    ::mnl_attr_put(question, RTA_DST, address.size(), address.data());
    if (interface != 0) {
        ::mnl_attr_put_u32(question, RTA_OIF, interface);
    }
    return ::mnl_socket_sendto(socket_.get(), question, question->nlmsg_len) == ssize_t{question->nlmsg_len};
}

InternetRoute RouteLookup::parseRoute(Bytes content) {
    const auto header = Netlink::structureAt<rtmsg>(content);
    if (!header || header->rtm_type != RTN_UNICAST) {
        return {};
    }
    InternetRoute route;
    Bytes gateway;
    Netlink::forEachAttribute<rtmsg>(content, [&](int type, Bytes value) {
        switch (type) {
        case RTA_OIF:
            if (const auto interface = Netlink::structureAt<unsigned>(value)) {
                route.nextHops = {{*interface, hasCarrier(header->rtm_flags)}};
            }
            break;
        case RTA_MULTIPATH:
            route.nextHops = parseNextHops(value);
            break;
        case RTA_PRIORITY:
            route.metric = Netlink::structureAt<std::uint32_t>(value).value_or(0);
            break;
        case RTA_NH_ID:
            route.hasNumberedHops = true;
            break;
        case RTA_CACHEINFO:
            route.expiresIn = secondsLeft(value);
            break;
        case RTA_GATEWAY:
        case RTA_VIA:
            gateway = gatewayIn(type, value);
            break;
        default:
            break;
        }
    });
    if (route.nextHops.size() == 1 && !gateway.empty()) { // several have theirs inside
        route.nextHops.front().gateway.assign(gateway.begin(), gateway.end());
    }
    return route;
}

} // namespace tarnwick
