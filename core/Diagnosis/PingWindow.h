// What the pings of the scoring window tell a diagnosis.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/PendingPing.h"

#include <optional>
#include <vector>

namespace tarnwick {

// All pings are in the order in which they were sent; `now` is in monotonic seconds.

/// Whether the median of the answers to the latest seconds' pings is twice the usual one, and 100 ms above it
/// at least: less is no trouble.
[[nodiscard]] bool areAnswersLate(
    const std::vector<PendingPing>& pings, std::optional<double> usualMs, double now);

/// Whether the host, whose last answer came at `lastReply`, is silent before anything is called down.
[[nodiscard]] bool isSilenceSuspicious(
    const std::vector<PendingPing>& pings, std::optional<double> lastReply, double now);

/// When the first ping of those without an answer was sent: before that, whatever is wrong had not begun for
/// sure. Long ago when none is without.
[[nodiscard]] double silentSince(const std::vector<PendingPing>& pings);

struct SettledPings {
    std::vector<HopSample> since{};
    std::vector<HopSample> before{};
};

/// Those that have been answered or can no longer be: sent from `since` on, and before.
[[nodiscard]] SettledPings settledPings(const std::vector<PendingPing>& pings, double since, double now);

} // namespace tarnwick
