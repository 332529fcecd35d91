// How long the machine has slept, from the difference of two clocks.
#pragma once

namespace tarnwick::SuspendedTime {

/// Seconds that the machine has been suspended since its start: the lead of the boot-time clock over the
/// monotonic one, which stops during a sleep. Only differences carry meaning. Any thread.
[[nodiscard]] double sinceBoot();

} // namespace tarnwick::SuspendedTime
