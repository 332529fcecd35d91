#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <netinet/in.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

using Netlink::Bytes;

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
    return to(internetAddress(family), interface);
}

std::optional<InternetRoute> RouteLookup::to(Bytes address, unsigned interface) {
    // First the route with all its next hops, then the one next hop that a packet would take.
    std::optional<InternetRoute> route = ask(address, interface, RTM_F_FIB_MATCH);
    if (route && route->nextHops.empty() && route->hasNumberedHops) {
        route = ask(address, interface, 0);
    }
    return route;
}

std::vector<std::byte> RouteLookup::sourceTo(Bytes address, unsigned interface) {
    auto route = ask(address, interface, 0);
    return route ? std::move(route->source) : std::vector<std::byte>();
}

std::optional<InternetRoute> RouteLookup::ask(Bytes address, unsigned interface, unsigned flags) {
    rtmsg fixedPart{};
    fixedPart.rtm_family = address.size() == sizeof(in6_addr) ? AF_INET6 : AF_INET;
    fixedPart.rtm_dst_len = static_cast<unsigned char>(address.size() * 8);
    fixedPart.rtm_flags = flags;
    NetlinkQuestion question(RTM_GETROUTE);
    question.put(fixedPart);
    question.add(RTA_DST, address);
    if (interface != 0) {
        question.add(RTA_OIF, interface);
    }
    std::optional<InternetRoute> route;
    const auto outcome = conversation_.ask(question, [&](const nlmsghdr& header, Bytes content) {
        route = header.nlmsg_type == RTM_NEWROUTE ? parseRoute(content) : InternetRoute{};
    });
    // Any error (unreachable, prohibited, no such family) means that there is no route.
    return outcome == NetlinkConversation::Outcome::refused ? InternetRoute{} : route;
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
        case RTA_PREFSRC:
            route.source.assign(value.begin(), value.end());
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
