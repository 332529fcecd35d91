// Asks the kernel which route it takes to the world, as it would for a packet: with its metrics, rules and
// tables.
#pragma once

#include "core/FileDescriptor.h"
#include "platform/linux/Netlink.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

/// An address of the family that stands for any in the world: kept for documentation, so no route leads there
/// but those that lead everywhere. Empty for other families.
[[nodiscard]] Netlink::Bytes worldAddress(int family);

struct WorldRoute {
    struct NextHop {
        unsigned interface; ///< its index
        bool hasCarrier;

        friend bool operator==(const NextHop&, const NextHop&) = default;
    };

    std::vector<NextHop> nextHops; ///< several share the packets of a multipath route; none: no way there
    std::uint32_t metric = 0;
    bool hasNumberedHops = false;    ///< the kernel may keep their interfaces to itself then
    std::optional<double> expiresIn; ///< seconds; a router has promised it no longer
};

/// One conversation with the kernel, which answers at once and waits for no lock that drivers hold.
class RouteLookup {
public:
    RouteLookup();

    /// The route to the family's world address; with `interface`, the one over it. Nothing when the kernel
    /// did not answer.
    [[nodiscard]] std::optional<WorldRoute> toWorld(int family, unsigned interface = 0);

    /// An answer's message about a route, without its header.
    [[nodiscard]] static WorldRoute parseRoute(Netlink::Bytes content);

    /// For further questions about the interfaces that it names.
    [[nodiscard]] const FileDescriptor& socket() const { return socket_; }

private:
    [[nodiscard]] std::optional<WorldRoute> ask(int family, unsigned interface, unsigned flags);

    FileDescriptor socket_;
    std::uint32_t sequence_ = 0;
};

} // namespace tarnwick
