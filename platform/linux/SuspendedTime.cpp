#include "platform/linux/SuspendedTime.h"

#include <ctime>
#include <limits>

namespace tarnwick::SuspendedTime {

namespace {

/// Seconds between two readings that count as the same moment.
constexpr double nearlyAtOnce = 0.01;
constexpr int mostAttempts = 5;

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

double sinceBoot() {
    // An interruption between two readings would look like a sleep.
    double best = 0;
    double shortest = std::numeric_limits<double>::infinity();
    for (int attempt = 0; attempt < mostAttempts && shortest > nearlyAtOnce; ++attempt) {
        const double before = seconds(CLOCK_MONOTONIC);
        const double withSleep = seconds(CLOCK_BOOTTIME);
        const double after = seconds(CLOCK_MONOTONIC);
        if (after - before < shortest) {
            shortest = after - before;
            best = withSleep - after;
        }
    }
    return best;
}

} // namespace tarnwick::SuspendedTime
