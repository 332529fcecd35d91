#include "platform/linux/Routers.h"

#include "platform/linux/NetworkInterfaces.h"
#include "platform/linux/NumericAddress.h"
#include "platform/linux/RoutedPath.h"

#include <algorithm>
#include <cstring>
#include <netinet/in.h>

namespace tarnwick::Routers {

namespace {

/// With `interface`, those over it.
std::vector<std::string> routersOver(RouteLookup& lookup, unsigned interface) {
    std::vector<std::string> routers;
    for (const int family : {AF_INET, AF_INET6}) {
        const InternetRoute route = lookup.toInternet(family, interface).value_or(InternetRoute{});
        for (const InternetRoute::NextHop& hop : route.nextHops) {
            const std::string router = addressOf(hop);
            if (!router.empty() && std::ranges::find(routers, router) == routers.end()) {
                routers.push_back(router);
            }
        }
    }
    return routers;
}

} // namespace

std::string addressOf(const InternetRoute::NextHop& hop) {
    if (hop.gateway.size() == sizeof(in_addr)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        std::memcpy(&address.sin_addr, hop.gateway.data(), sizeof address.sin_addr);
        return numericAddress(reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }
    if (hop.gateway.size() == sizeof(in6_addr)) {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        std::memcpy(&address.sin6_addr, hop.gateway.data(), sizeof address.sin6_addr);
        // Any other address is the same from everywhere.
        address.sin6_scope_id = IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr) ? hop.interface : 0;
        return numericAddress(reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }
    return {};
}

std::vector<std::string> present() {
    RouteLookup lookup;
    std::vector<std::string> routers = routersOver(lookup, 0);
    if (!routers.empty()) {
        return routers;
    }
    const auto routed = RoutedPath::present();
    for (const std::string& name : routed ? routed->path.interfaces : std::vector<std::string>()) {
        const auto interface = NetworkInterfaces::indexOf(lookup.descriptor(), name);
        routers = interface ? routersOver(lookup, *interface) : routers;
        if (!routers.empty()) {
            break;
        }
    }
    return routers;
}

} // namespace tarnwick::Routers
