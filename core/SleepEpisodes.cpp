#include "core/SleepEpisodes.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

SleepEpisodes::Events SleepEpisodes::setHasAnnouncer(bool hasAnnouncer) {
    hasAnnouncer_ = hasAnnouncer;
    return !hasAnnouncer && isAsleep() ? wake() : Events{};
}

SleepEpisodes::Events SleepEpisodes::sleepAnnounced(const Clocks& clocks) {
    // An announcement that arrives after the sleep belongs to the sleep that is over.
    const bool isLate = noteSuspension(clocks) || sleptAt_.has_value();
    return fallAsleep(clocks.now + (isLate ? wakeDelay : longestPreparation));
}

SleepEpisodes::Events SleepEpisodes::wakeAnnounced(const Clocks& clocks) {
    const bool hasSlept = noteSuspension(clocks) || sleptAt_.has_value();
    if (isAsleep()) {
        return wake();
    }
    return hasSlept ? reportPastSleep() : Events{};
}

SleepEpisodes::Events SleepEpisodes::check(const Clocks& clocks) {
    const bool hasSlept = noteSuspension(clocks);
    if (awakeBy_) {
        if (hasSlept) {
            awakeBy_ = std::min(*awakeBy_, clocks.now + wakeDelay);
        }
        return clocks.now >= *awakeBy_ ? wake() : Events{};
    }
    if (hasSlept && !sleptAt_) {
        sleptAt_ = clocks.now;
    }
    const bool isDue = sleptAt_ && (!hasAnnouncer_ || clocks.now >= *sleptAt_ + announcementDelay);
    return isDue ? reportPastSleep() : Events{};
}

bool SleepEpisodes::noteSuspension(const Clocks& clocks) {
    return clocks.suspended - std::exchange(lastSuspended_, clocks.suspended) > shortestSleep;
}

SleepEpisodes::Events SleepEpisodes::fallAsleep(double awakeBy) {
    const bool wasAsleep = isAsleep();
    awakeBy_ = awakeBy;
    return wasAsleep ? Events{} : Events{Event::fellAsleep};
}

SleepEpisodes::Events SleepEpisodes::wake() {
    awakeBy_.reset();
    sleptAt_.reset();
    return {Event::woke};
}

SleepEpisodes::Events SleepEpisodes::reportPastSleep() {
    sleptAt_.reset();
    return {Event::fellAsleep, Event::woke};
}

} // namespace tarnwick
