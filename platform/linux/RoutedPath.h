// The path to the network: what the kernel says of its routes to the internet.
#pragma once

#include "platform/ports/PathMonitor.h"

#include <optional>

namespace tarnwick {

/// Satisfied when IPv4 or IPv6 has a route over an interface that is up and has carrier. The interfaces in
/// use come first, IPv4's before IPv6's, then the others with a route of their own, by its metric.
struct RoutedPath {
    NetworkPath path{.satisfied = false, .interfaces = {}};
    std::optional<double> expiresIn; ///< seconds until the only route may expire without a message

    /// Nothing when the kernel does not answer.
    [[nodiscard]] static std::optional<RoutedPath> present();
};

} // namespace tarnwick
