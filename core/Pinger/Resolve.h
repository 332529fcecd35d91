// A host text's addresses from the system's resolver.
#pragma once

#include "core/Pinger/PingNetwork.h"

namespace tarnwick {

/// Every IPv4 and IPv6 address once, in the resolver's order; never an empty list. May block for minutes, as
/// the resolver does. Any thread.
[[nodiscard]] Resolution resolve(const std::string& host);

} // namespace tarnwick
