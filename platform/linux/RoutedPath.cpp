#include "platform/linux/RoutedPath.h"

#include "platform/linux/NetworkInterfaces.h"
#include "platform/linux/RouteLookup.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <sys/socket.h>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using Names = std::vector<std::string>;

constexpr std::array families{AF_INET, AF_INET6};

// A host of containers has hundreds, and any of them may have a route to the internet. Asking for one that
// has none takes about ten microseconds.
constexpr std::size_t mostInterfaces = 1024;

bool contains(const Names& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

void addUsable(Names& names, const InternetRoute& route, int socket) {
    for (const InternetRoute::NextHop& hop : route.nextHops) {
        const auto name = hop.hasCarrier ? NetworkInterfaces::nameOf(socket, hop.interface) : std::nullopt;
        if (name && NetworkInterfaces::isUpAndNotLoopback(socket, *name) && !contains(names, *name)) {
            names.push_back(*name);
        }
    }
}

/// An interface that has a route but is not used now. Members in the order of preference.
struct StandBy {
    std::size_t family;
    std::uint32_t metric;
    unsigned interface;
    std::string name;
};

std::optional<StandBy> standBy(RouteLookup& lookup, const std::string& name) {
    const auto index = NetworkInterfaces::indexOf(lookup.descriptor(), name).value_or(0);
    for (std::size_t family = 0; index != 0 && family < families.size(); ++family) {
        const InternetRoute route = lookup.toInternet(families[family], index).value_or(InternetRoute{});
        Names usable;
        addUsable(usable, route, lookup.descriptor());
        if (contains(usable, name)) {
            return StandBy{family, route.metric, index, name};
        }
    }
    return std::nullopt;
}

void addStandingBy(Names& names, RouteLookup& lookup) {
    std::vector<StandBy> others;
    for (const std::string& name : NetworkInterfaces::names(mostInterfaces)) {
        if (!contains(names, name) && NetworkInterfaces::isUpAndNotLoopback(lookup.descriptor(), name)) {
            if (auto other = standBy(lookup, name)) {
                others.push_back(std::move(*other));
            }
        }
    }
    std::ranges::sort(others, {}, [](const StandBy& other) {
        return std::tuple(other.family, other.metric, other.interface);
    });
    std::ranges::transform(others, std::back_inserter(names), &StandBy::name);
}

} // namespace

std::optional<RoutedPath> RoutedPath::present() {
    RouteLookup lookup;
    const auto route4 = lookup.toInternet(AF_INET);
    const auto route6 = lookup.toInternet(AF_INET6);
    if (!route4 || !route6) {
        return std::nullopt;
    }
    RoutedPath result;
    Names& names = result.path.interfaces;
    addUsable(names, *route4, lookup.descriptor());
    const bool needsRoute6 = names.empty();
    addUsable(names, *route6, lookup.descriptor());
    result.path.satisfied = !names.empty();
    if (result.path.satisfied) {
        addStandingBy(names, lookup);
        result.expiresIn = needsRoute6 ? route6->expiresIn : std::nullopt;
    }
    return result;
}

} // namespace tarnwick
