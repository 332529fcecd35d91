#include "platform/linux/Routers.h"

#include "platform/linux/NetworkInterfaces.h"
#include "platform/linux/NumericAddress.h"
#include "platform/linux/RoutedPath.h"

#include <algorithm>
#include <sys/socket.h>

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
    return numericAddressOf(hop.gateway, hop.interface);
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
