#include "platform/linux/SleepEpisodes.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

SleepEpisodes::SleepEpisodes(SleepMonitor::Handlers handlers, const Reading& start)
    : handlers_(std::move(handlers)), lastSuspended_(start.suspended) {
}

void SleepEpisodes::setHasAnnouncer(bool hasAnnouncer) {
    hasAnnouncer_ = hasAnnouncer;
    if (!hasAnnouncer && isAsleep()) {
        wake();
    }
}

void SleepEpisodes::sleepAnnounced(const Reading& reading) {
    // One that could not be heard in time is heard after the sleep: still the same sleep.
    const bool isLate = hasSlept(reading) || sleptAt_.has_value();
    fallAsleep(reading.now + (isLate ? wakeDelay : longestFarewell));
}

void SleepEpisodes::wakeAnnounced(const Reading& reading) {
    if (hasSlept(reading)) {
        sleptAt_ = reading.now;
    }
    if (isAsleep()) {
        wake();
    } else if (sleptAt_) {
        tellPastSleep();
    }
}

void SleepEpisodes::check(const Reading& reading) {
    const bool slept = hasSlept(reading);
    if (awakeBy_) {
        if (slept) {
            awakeBy_ = std::min(*awakeBy_, reading.now + wakeDelay);
        }
        if (reading.now >= *awakeBy_) {
            wake();
        }
        return;
    }
    if (slept && !sleptAt_) {
        sleptAt_ = reading.now;
    }
    if (sleptAt_ && (!hasAnnouncer_ || reading.now >= *sleptAt_ + announcementDelay)) {
        tellPastSleep();
    }
}

bool SleepEpisodes::hasSlept(const Reading& reading) {
    return reading.suspended - std::exchange(lastSuspended_, reading.suspended) > shortestSleep;
}

void SleepEpisodes::fallAsleep(double awakeBy) {
    const bool wasAsleep = isAsleep();
    awakeBy_ = awakeBy;
    if (!wasAsleep && handlers_.willSleep) {
        handlers_.willSleep();
    }
}

void SleepEpisodes::wake() {
    awakeBy_.reset();
    sleptAt_.reset();
    if (handlers_.didWake) {
        handlers_.didWake();
    }
}

void SleepEpisodes::tellPastSleep() {
    fallAsleep(0);
    wake();
}

} // namespace tarnwick
