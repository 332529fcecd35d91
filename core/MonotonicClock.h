// The time base of round trips, silences and deadlines.
#pragma once

namespace tarnwick::MonotonicClock {

/// Seconds on CLOCK_MONOTONIC: never goes back, ignores changes of the wall clock, stops while the machine
/// sleeps. Only differences have a meaning. Any thread.
[[nodiscard]] double now();

} // namespace tarnwick::MonotonicClock
