// Hosts that are worth pinging, to choose from.
#pragma once

#include "platform/ports/NetworkServers.h"

#include <string>
#include <vector>

namespace tarnwick {

struct HostPreset {
    std::string name; ///< for users: "Router"
    std::string address;
    bool isOfOwnNetwork; ///< else a public name server

    friend bool operator==(const HostPreset&, const HostPreset&) = default;
};

/// The machines of the own network, then well-known public ones. Each address once.
[[nodiscard]] std::vector<HostPreset> hostPresets(const NetworkServers& own);

} // namespace tarnwick
