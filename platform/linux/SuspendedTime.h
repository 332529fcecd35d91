// How long the machine has slept, as its clocks tell.
#pragma once

namespace tarnwick::SuspendedTime {

/// Seconds that the machine has been suspended since its start: what the boot-time clock is ahead of the
/// monotonic one, which stands still meanwhile. Only differences carry meaning. Any thread.
[[nodiscard]] double now();

} // namespace tarnwick::SuspendedTime
