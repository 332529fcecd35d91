#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace tarnwick {

namespace {

using Netlink::Bytes;

constexpr std::size_t answerSize = 8UL * 1024;

template<std::size_t Size>
constexpr std::array<std::byte, Size> bytes(const std::array<unsigned char, Size>& values) {
    std::array<std::byte, Size> result{};
    std::ranges::transform(values, result.begin(), [](unsigned char value) { return std::byte{value}; });
    return result;
}

constexpr auto world4 = bytes<4>({203, 0, 113, 9});
constexpr auto world6 = bytes<16>({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9});

class Question {
public:
    Question(std::uint32_t sequence, int family, unsigned interface, unsigned flags) {
        const Bytes address = worldAddress(family);
        rtmsg route{};
        route.rtm_family = static_cast<unsigned char>(family);
        route.rtm_dst_len = static_cast<unsigned char>(address.size() * 8);
        route.rtm_flags = flags;
        nlmsghdr header{};
        header.nlmsg_type = RTM_GETROUTE;
        header.nlmsg_flags = NLM_F_REQUEST;
        header.nlmsg_seq = sequence;

        append(asBytes(header));
        append(asBytes(route));
        appendAttribute(RTA_DST, address);
        if (interface != 0) {
            appendAttribute(RTA_OIF, asBytes(interface));
        }
        header.nlmsg_len = static_cast<std::uint32_t>(content_.size());
        std::memcpy(content_.data(), &header, sizeof header);
    }

    [[nodiscard]] Bytes content() const { return content_; }

private:
    template<class Structure>
    static Bytes asBytes(const Structure& structure) {
        return std::as_bytes(std::span(&structure, 1));
    }

    void append(Bytes more) { content_.insert(content_.end(), more.begin(), more.end()); }

    void appendAttribute(unsigned short type, Bytes value) {
        append(asBytes(
            rtattr{.rta_len = static_cast<unsigned short>(sizeof(rtattr) + value.size()), .rta_type = type}));
        append(value);
    }

    std::vector<std::byte> content_;
};

bool hasCarrier(unsigned flags) {
    return (flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) == 0;
}

/// The hops of a multipath route are equals, and the kernel begins its list with any of them: here they have
/// an order of their own.
std::vector<WorldRoute::NextHop> parseNextHops(Bytes rest) {
    std::vector<WorldRoute::NextHop> hops;
    while (const auto hop = Netlink::takeBlock<rtnexthop>(rest)) {
        hops.push_back({static_cast<unsigned>(hop->header.rtnh_ifindex), hasCarrier(hop->header.rtnh_flags)});
    }
    std::ranges::sort(hops, {}, &WorldRoute::NextHop::interface);
    return hops;
}

std::optional<double> secondsLeft(Bytes value) {
    static const auto ticksPerSecond = static_cast<double>(::sysconf(_SC_CLK_TCK));
    const auto cached = Netlink::structureAt<rta_cacheinfo>(value);
    return cached && cached->rta_expires > 0 ? std::optional(cached->rta_expires / ticksPerSecond)
                                             : std::nullopt;
}

} // namespace

Bytes worldAddress(int family) {
    switch (family) {
    case AF_INET:
        return world4;
    case AF_INET6:
        return world6;
    default:
        return {};
    }
}

RouteLookup::RouteLookup()
    : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)) {
}

std::optional<WorldRoute> RouteLookup::toWorld(int family, unsigned interface) {
    // The route itself with all its next hops; else the one next hop that a packet would take.
    std::optional<WorldRoute> route = ask(family, interface, RTM_F_FIB_MATCH);
    if (route && route->nextHops.empty() && route->hasNumberedHops) {
        route = ask(family, interface, 0);
    }
    return route;
}

std::optional<WorldRoute> RouteLookup::ask(int family, unsigned interface, unsigned flags) {
    const Question question(++sequence_, family, interface, flags);
    const Bytes content = question.content();
    if (::send(socket_.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
        return std::nullopt;
    }
    std::array<std::byte, answerSize> buffer{};
    const ssize_t size = ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
    Bytes answer = Bytes(buffer).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const auto message = Netlink::takeBlock<nlmsghdr>(answer);
    if (!message || message->header.nlmsg_seq != sequence_) {
        return std::nullopt;
    }
    // Whatever error the kernel answers with (unreachable, prohibited, no such family): it has no route.
    return message->header.nlmsg_type == RTM_NEWROUTE ? parseRoute(message->content) : WorldRoute{};
}

WorldRoute RouteLookup::parseRoute(Bytes content) {
    const auto header = Netlink::structureAt<rtmsg>(content);
    if (!header || header->rtm_type != RTN_UNICAST) {
        return {};
    }
    WorldRoute route;
    Bytes rest = Netlink::attributesBehind<rtmsg>(content);
    while (const auto attribute = Netlink::takeBlock<rtattr>(rest)) {
        const Bytes value = attribute->content;
        switch (attribute->header.rta_type) {
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
        default:
            break;
        }
    }
    return route;
}

} // namespace tarnwick
