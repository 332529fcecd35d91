// The system's clocks in seconds, alone and two at the same moment.
#pragma once

#include <ctime>

namespace tarnwick {

[[nodiscard]] double seconds(const timespec& time);
[[nodiscard]] double secondsOn(clockid_t clock);

struct ClockPair {
    double monotonic; ///< seconds on CLOCK_MONOTONIC
    double other;     ///< seconds on the other clock

    /// Reads again when the thread was interrupted between the two, and takes the best of a few attempts.
    [[nodiscard]] static ClockPair read(clockid_t other);

    [[nodiscard]] double difference() const { return other - monotonic; }
};

} // namespace tarnwick
