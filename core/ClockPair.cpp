#include "core/ClockPair.h"

#include <limits>

namespace tarnwick {

namespace {

constexpr int mostAttempts = 5;
/// Seconds from one reading of the monotonic clock to the next: far less than the shortest round trip.
constexpr double uninterrupted = 0.000005;

} // namespace

double seconds(const timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double secondsOn(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return seconds(time);
}

ClockPair ClockPair::read(clockid_t other) {
    ClockPair best{};
    double shortest = std::numeric_limits<double>::infinity();
    for (int attempt = 0; attempt < mostAttempts && shortest > uninterrupted; ++attempt) {
        const ClockPair pair{.monotonic = secondsOn(CLOCK_MONOTONIC), .other = secondsOn(other)};
        const double span = secondsOn(CLOCK_MONOTONIC) - pair.monotonic;
        if (span < shortest) {
            shortest = span;
            best = pair;
        }
    }
    return best;
}

} // namespace tarnwick
