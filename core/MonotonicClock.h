// The one time base of everything that measures round trips, silences and deadlines.
#pragma once

namespace tarnwick::MonotonicClock {

/// Seconds on CLOCK_MONOTONIC: never goes back, ignores the wall clock, stands still while the machine
/// sleeps. Only differences carry meaning. Any thread.
[[nodiscard]] double now();

} // namespace tarnwick::MonotonicClock
