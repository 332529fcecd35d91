// The machines of the network that this one depends on.
#pragma once

#include <string>
#include <vector>

namespace tarnwick {

/// Numeric addresses, each once; a link-local IPv6 one with its interface, as "fe80::1%wlan0".
struct NetworkServers {
    std::vector<std::string> routers;     ///< on the way to the internet, IPv4's before IPv6's
    std::vector<std::string> nameServers; ///< in the resolver's order

    friend bool operator==(const NetworkServers&, const NetworkServers&) = default;
};

} // namespace tarnwick
