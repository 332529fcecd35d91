// A host text's addresses from the system's resolver.
#pragma once

#include "core/Pinger/PingNetwork.h"

namespace tarnwick {

/// Every IPv4 and IPv6 address once, in the resolver's order; never an empty list. Blocks for as long as the
/// resolver does, which can be minutes: for a thread of its own. Touches no state of the program.
[[nodiscard]] Resolution resolve(const std::string& host);

} // namespace tarnwick
