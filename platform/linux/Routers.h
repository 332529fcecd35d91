// The routers between this machine and the internet.
#pragma once

#include "platform/linux/RouteLookup.h"

#include <string>
#include <vector>

namespace tarnwick::Routers {

/// Those of the routes to the internet, as the kernel tells them: `NetworkServers::routers`. A tunnel has
/// none; then those of the next interface with a route, since the tunnel's own packets go there. Empty where
/// the kernel does not answer.
[[nodiscard]] std::vector<std::string> present();

/// The router's address, numeric; empty where the hop has none.
[[nodiscard]] std::string addressOf(const InternetRoute::NextHop& hop);

} // namespace tarnwick::Routers
