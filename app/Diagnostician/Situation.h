// What pinging has brought so far, at one moment.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/PendingPing.h"
#include "core/PingError.h"
#include "core/ResolvedAddress.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// A lookup of the host's name. Times in monotonic seconds.
struct Lookup {
    double begun = 0;
    std::optional<double> ended = std::nullopt; ///< with an address or without; nothing: it goes on
};

/// At one tick. Times in monotonic seconds.
struct Situation {
    double now = 0;
    Trouble trouble = Trouble::none;
    std::string host{};
    std::optional<ResolvedAddress> address{}; ///< that is pinged
    std::optional<PingError> startError{};
    std::optional<Lookup> lookup = std::nullopt;  ///< the latest
    std::vector<PendingPing> pings{};             ///< of the scoring window, oldest first
    std::optional<double> usualMs = std::nullopt; ///< the host's median over the last minutes
};

} // namespace tarnwick
