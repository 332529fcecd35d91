// Where on the path a fault lies, by the chances of what was seen.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <vector>

namespace tarnwick {

/// A ping or probe counts as bad when it was lost, or when it took longer than usual by about half of what
/// the host's pings take longer now. `usualMs`: of that hop; nothing: only a loss is bad.
[[nodiscard]] bool isBadSample(const HopSample& sample, std::optional<double> usualMs, double extraMs);

/// By how many milliseconds the host's answers are later than usual: their median. 0 where that is unknown.
[[nodiscard]] double extraDelay(const Evidence& evidence);

/// How much of what passes the fault it spoils: as much as of the host's pings, or as little as is in keeping
/// with these when they have had bad luck.
enum class BadShare { asSeen, atLeast };

/// For each link of the path (the first one leads from this machine to the first hop) the chance that the
/// fault lies there and nowhere else, if every link is as likely as another before anything was seen. They
/// add up to 1. Empty without a path that ends at the host.
///
/// What is behind the fault is as bad as the share says. What lies before it is well, but a router answers
/// probes when it likes: its silence says little, its answer much.
[[nodiscard]] std::vector<double> faultPlaces(const Evidence& evidence, BadShare wanted = BadShare::asSeen);

} // namespace tarnwick
