// Asks the kernel which route a packet would take, with its metrics, rules and tables.
#pragma once

#include "platform/linux/NetlinkConversation.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

/// An address to ask for, in the place of all hosts on the internet. It is reserved for documentation, so no
/// route to a particular network leads there. Empty for families other than IPv4 and IPv6.
[[nodiscard]] Netlink::Bytes internetAddress(int family);

struct InternetRoute {
    struct NextHop {
        unsigned interface; ///< its index
        bool hasCarrier;
        std::vector<std::byte> gateway{}; ///< the router's IPv4 or IPv6 address; empty where there is none

        friend bool operator==(const NextHop&, const NextHop&) = default;
    };

    std::vector<NextHop> nextHops; ///< several for a multipath route; none: unreachable
    std::uint32_t metric = 0;
    bool hasNumberedHops = false;    ///< then the kernel may not name their interfaces
    std::optional<double> expiresIn; ///< seconds until the router's advertisement ends
    std::vector<std::byte> source{}; ///< the own address that packets have; empty where the route names none
};

/// One conversation with the kernel. It answers at once, without the lock that drivers hold while they bring
/// an interface up.
class RouteLookup {
public:
    /// The route to the family's `internetAddress`; with `interface`, the one over it. Nothing when the
    /// kernel did not answer.
    [[nodiscard]] std::optional<InternetRoute> toInternet(int family, unsigned interface = 0);

    /// The route to one host's IPv4 or IPv6 address.
    [[nodiscard]] std::optional<InternetRoute> to(Netlink::Bytes address, unsigned interface = 0);

    /// The own address that packets to it have; empty where there is none.
    [[nodiscard]] std::vector<std::byte> sourceTo(Netlink::Bytes address, unsigned interface = 0);

    /// Reads the content of an answer that describes a route. `content` is aligned for `rtmsg`.
    [[nodiscard]] static InternetRoute parseRoute(Netlink::Bytes content);

    /// The descriptor of its socket, for questions about the interfaces in an answer. Call it after an
    /// answer.
    [[nodiscard]] int descriptor() const { return conversation_.descriptor(); }

private:
    [[nodiscard]] std::optional<InternetRoute> ask(
        Netlink::Bytes address, unsigned interface, unsigned flags);

    NetlinkConversation conversation_{NETLINK_ROUTE};
};

} // namespace tarnwick
