#include "platform/linux/LinkReader.h"

#include "platform/linux/LinkAddresses.h"
#include "platform/linux/NeighborLookup.h"
#include "platform/linux/NumericAddress.h"
#include "platform/linux/Routers.h"
#include "platform/linux/WirelessLink.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace tarnwick {

struct LinkReader::Kernel {
    NetlinkConversation routing{NETLINK_ROUTE};
    RouteLookup routes;
};

namespace {

using LinkKind = LinkEvidence::Kind;

/// Whom packets are for. A link-local address is known by its interface alone.
struct Destination {
    std::vector<std::byte> address; ///< IPv4 or IPv6
    unsigned interface = 0;         ///< 0: any
};

template<class Address>
std::vector<std::byte> copyOf(const Address& address) {
    const auto bytes = std::as_bytes(std::span(&address, 1));
    return {bytes.begin(), bytes.end()};
}

std::optional<Destination> destinationOf(const ResolvedAddress& address) {
    const auto bytes = std::as_bytes(std::span(address.sockaddr));
    if (const auto to6 = Netlink::structureAt<sockaddr_in6>(bytes); to6 && address.family == AF_INET6) {
        return Destination{.address = copyOf(to6->sin6_addr), .interface = to6->sin6_scope_id};
    }
    if (const auto to4 = Netlink::structureAt<sockaddr_in>(bytes); to4 && address.family == AF_INET) {
        return Destination{.address = copyOf(to4->sin_addr)};
    }
    return std::nullopt;
}

/// Of several, the first one that can be used.
std::optional<InternetRoute::NextHop> hopOf(const std::optional<InternetRoute>& route) {
    if (!route || route->nextHops.empty()) {
        return std::nullopt;
    }
    const auto usable = std::ranges::find(route->nextHops, true, &InternetRoute::NextHop::hasCarrier);
    return usable == route->nextHops.end() ? route->nextHops.front() : *usable;
}

/// Whether the way to the internet leads over that address on that interface.
bool isRouterToInternet(RouteLookup& routes, const InternetRoute::NextHop& router) {
    return std::ranges::any_of(std::array{AF_INET, AF_INET6}, [&](int family) {
        const auto route = routes.toInternet(family);
        return route && std::ranges::any_of(route->nextHops, [&](const InternetRoute::NextHop& hop) {
                   return hop.interface == router.interface && hop.gateway == router.gateway;
               });
    });
}

/// The first step on the way. Towards the router to the internet that is this router itself.
std::optional<InternetRoute::NextHop> firstHopTo(RouteLookup& routes, const ResolvedAddress& address) {
    const auto destination = destinationOf(address);
    if (!destination) {
        return std::nullopt;
    }
    auto hop = hopOf(routes.to(destination->address, destination->interface));
    if (!hop || !hop->gateway.empty()) {
        return hop;
    }
    InternetRoute::NextHop host = *hop;
    host.gateway = destination->address;
    return isRouterToInternet(routes, host) ? host : hop;
}

std::string sourceTo(RouteLookup& routes, const ResolvedAddress& address, unsigned interface) {
    const auto destination = destinationOf(address);
    return destination
               ? numericAddressOf(routes.sourceTo(destination->address, destination->interface), interface)
               : "";
}

LinkState stateOf(const KnownLink& link, bool hasRoute) {
    const LinkInformation& information = link.information;
    LinkState state{
        .link =
            {.interface = information.name,
             .kind = link.kind,
             .isUp = information.isUp,
             .hasCarrier = information.hasCarrier,
             .hasAddress = link.hasAddress,
             .hasRoute = hasRoute},
        .sentBytes = information.sentBytes,
        .receivedBytes = information.receivedBytes};
    if (link.kind == LinkKind::wifi && information.hasCarrier) {
        const auto figures = WirelessLink::present(information.index, information.name);
        state.link.signalDbm = figures.signalDbm;
        state.link.rateMbit = figures.rateMbit;
    }
    return state;
}

} // namespace

std::optional<LinkState> LinkReader::present(const std::optional<ResolvedAddress>& to) {
    Kernel kernel;
    if (!kernel.routes.toInternet(AF_INET)) {
        return std::nullopt;
    }
    const auto way = wayTo(kernel, to);
    return way ? along(kernel, *way) : withoutWay(kernel);
}

std::optional<LinkReader::Way> LinkReader::wayTo(Kernel& kernel, const std::optional<ResolvedAddress>& to) {
    if (const auto hop = to ? firstHopTo(kernel.routes, *to) : std::nullopt) {
        return Way{.hop = *hop, .isAskedFor = true, .source = sourceTo(kernel.routes, *to, hop->interface)};
    }
    for (const int family : {AF_INET, AF_INET6}) {
        if (const auto hop = hopOf(kernel.routes.toInternet(family))) {
            return Way{.hop = *hop, .isAskedFor = !to};
        }
    }
    return std::nullopt;
}

std::vector<KnownLink> LinkReader::knownLinks(Kernel& kernel) const {
    const std::set<unsigned> addressed = LinkAddresses::interfaces(kernel.routing);
    std::vector<KnownLink> links;
    for (LinkInformation& information : LinkInformation::all(kernel.routing)) {
        const LinkKind kind = mayBeConnection(information) || information.index == lastInterface_
                                  ? kindOf(information)
                                  : LinkKind::other;
        const bool hasAddress = addressed.contains(information.index);
        links.push_back({std::move(information), kind, hasAddress});
    }
    return links;
}

std::optional<LinkState> LinkReader::withoutWay(Kernel& kernel) const {
    const std::vector<KnownLink> links = knownLinks(kernel);
    if (links.empty()) { // not even that to this machine itself
        return std::nullopt;
    }
    const KnownLink* const link = likelyLink(links, lastInterface_);
    return link == nullptr ? LinkState{.link = {.isUp = false, .hasRoute = false}} : stateOf(*link, false);
}

std::optional<LinkState> LinkReader::along(Kernel& kernel, const Way& way) {
    auto information = LinkInformation::of(kernel.routing, way.hop.interface);
    if (!information) {
        return withoutWay(kernel); // it has gone meanwhile
    }
    KnownLink link{*std::move(information)};
    link.kind = kindOf(link.information);
    if (link.kind == LinkKind::tunnel) {
        const std::vector<KnownLink> links = knownLinks(kernel);
        const KnownLink* const below = likelyLink(links, lastInterface_);
        if (below != nullptr && !(below->information.isUp && below->information.hasCarrier)) {
            return stateOf(*below, false);
        }
    } else {
        lastInterface_ = way.hop.interface;
    }
    // A link between two machines alone may use the address of another one.
    link.hasAddress = link.kind == LinkKind::tunnel || link.kind == LinkKind::other
                      || LinkAddresses::interfaces(kernel.routing).contains(way.hop.interface);
    LinkState state = stateOf(link, true);
    state.link.source = way.source;
    if (way.isAskedFor && !way.hop.gateway.empty()) {
        addRouter(kernel, way.hop, state);
    }
    return state;
}

void LinkReader::addRouter(Kernel& kernel, const InternetRoute::NextHop& hop, LinkState& state) {
    const bool isSame =
        lastNeighbor_.hop.interface == hop.interface && lastNeighbor_.hop.gateway == hop.gateway;
    const auto entry = NeighborEntry::of(kernel.routing, hop.interface, hop.gateway);
    state.router = Routers::addressOf(hop);
    state.neighbor = neighborState(entry, isSame ? lastNeighbor_.state : NeighborState::unknown);
    lastNeighbor_ = {hop, state.neighbor};
}

} // namespace tarnwick
