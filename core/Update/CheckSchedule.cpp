#include "core/Update/CheckSchedule.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// The part of `most` that `jitter` gives.
RunLoop::WallTime::duration share(std::chrono::seconds most, double jitter) {
    return std::chrono::duration_cast<RunLoop::WallTime::duration>(
        std::chrono::duration<double>(most) * std::clamp(jitter, 0.0, 1.0));
}

} // namespace

RunLoop::WallTime nextCheck(
    std::optional<RunLoop::WallTime> lastCheck, std::chrono::seconds interval, double jitter,
    RunLoop::WallTime now) {
    if (lastCheck && *lastCheck <= now) {
        const auto due = *lastCheck + interval + share(interval / jitterPartOfInterval, jitter);
        if (due >= now + calmBeforeCheck) {
            return due;
        }
    }
    return now + calmBeforeCheck + share(jitterOfMissedCheck, jitter);
}

} // namespace tarnwick
