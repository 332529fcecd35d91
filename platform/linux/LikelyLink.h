// Which network interface people mean by their connection while no route tells.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "platform/linux/LinkInformation.h"

#include <vector>

namespace tarnwick {

struct KnownLink {
    LinkInformation information{};
    LinkEvidence::Kind kind = LinkEvidence::Kind::other;
    bool hasAddress = false;

    /// All that it needs to reach its own network.
    [[nodiscard]] bool isUsable() const { return information.isUp && information.hasCarrier && hasAddress; }
};

/// Whether it may be the connection of a whole machine, and neither a network within the machine nor one that
/// another connection carries.
[[nodiscard]] bool mayBeConnection(const LinkInformation& link);

/// A usable one before the `last` one that had a route (its index; 0: not known), hardware before software,
/// a cable or network that is there before one that is not; then Wi-Fi before cables: a machine that has both
/// mostly uses its Wi-Fi. For the port of a bridge, that bridge. Null when there is none.
[[nodiscard]] const KnownLink* likelyLink(const std::vector<KnownLink>& links, unsigned last);

} // namespace tarnwick
