// The path to the network, put together from what the kernel says of its routes to the world.
#pragma once

#include "platform/ports/PathMonitor.h"

#include <optional>

namespace tarnwick {

/// Satisfied when IPv4 or IPv6 has a route over an interface that is up with carrier. Those in use come
/// first, IPv4's before IPv6's, and then those that stand by with a route of their own, by its metric.
struct RoutedPath {
    NetworkPath path{.satisfied = false, .interfaces = {}};
    std::optional<double> expiresIn; ///< seconds until the only way there may end without a message

    /// Nothing when the kernel does not answer.
    [[nodiscard]] static std::optional<RoutedPath> present();
};

} // namespace tarnwick
