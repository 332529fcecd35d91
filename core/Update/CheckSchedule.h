// When the next scheduled check for updates is due.
#pragma once

#include "core/RunLoop.h"

#include <chrono>
#include <optional>

namespace tarnwick {

/// What a check waits for at least: the start of a session, and a machine that wakes when one was due, have
/// enough to do.
inline constexpr std::chrono::seconds calmBeforeCheck = std::chrono::minutes(1);
// What `jitter` adds at most: this part of the interval, and to a check that was missed this time.
inline constexpr int jitterPartOfInterval = 24;
inline constexpr std::chrono::seconds jitterOfMissedCheck = std::chrono::minutes(5);

/// An interval after the last check, and up to a twenty-fourth of it later. A check that was missed is due
/// within minutes; so is the first one, and that after a last check that lies in the future, since the clock
/// was set back. `jitter` is drawn at random from 0 to 1, so that the programs of many machines do not ask at
/// the same moment. Asked at the start, after each check that brought a trusted feed, and when a check was
/// slept through: the time counts from `now`.
[[nodiscard]] RunLoop::WallTime nextCheck(
    std::optional<RunLoop::WallTime> lastCheck, std::chrono::seconds interval, double jitter,
    RunLoop::WallTime now);

} // namespace tarnwick
