// Puts together what the kernel says of the way out of this machine.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/ResolvedAddress.h"
#include "platform/linux/LikelyLink.h"
#include "platform/linux/RouteLookup.h"
#include "platform/ports/LinkInspector.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Remembers what it read, to understand what it reads next. Any thread, one at a time: the kernel may make
/// it wait until a driver has brought an interface up.
class LinkReader {
public:
    /// As `LinkInspector::inspect`. Behind a tunnel it looks for the interface that should carry it, and
    /// tells of that one if it is off or has no carrier.
    [[nodiscard]] std::optional<LinkState> present(const std::optional<ResolvedAddress>& to);

private:
    struct Kernel;

    struct Way {
        InternetRoute::NextHop hop;
        bool isAskedFor = false; ///< leads where the question asks for
        std::string source{};    ///< likewise
    };

    struct Neighbor {
        InternetRoute::NextHop hop{};
        NeighborState state = NeighborState::unknown;
    };

    [[nodiscard]] static std::optional<Way> wayTo(Kernel& kernel, const std::optional<ResolvedAddress>& to);
    [[nodiscard]] std::vector<KnownLink> knownLinks(Kernel& kernel) const;
    [[nodiscard]] std::optional<LinkState> withoutWay(Kernel& kernel) const;
    [[nodiscard]] std::optional<LinkState> along(Kernel& kernel, const Way& way);
    void addRouter(Kernel& kernel, const InternetRoute::NextHop& hop, LinkState& state);

    unsigned lastInterface_ = 0; ///< that had a route; 0: not known
    Neighbor lastNeighbor_;
};

} // namespace tarnwick
