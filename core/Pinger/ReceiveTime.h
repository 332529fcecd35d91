// When a datagram arrived, even if the program reads it late.
#pragma once

#include <optional>

namespace tarnwick {

/// Three readings taken together, right after the datagram was read.
struct ReceiveReadings {
    double monotonic = 0;                       ///< seconds on the monotonic clock
    double wall = 0;                            ///< seconds on the wall clock
    std::optional<double> stamp = std::nullopt; ///< the kernel's own wall-clock stamp of the arrival
};

/// When the datagram arrived, in monotonic seconds: the time of the kernel's stamp; without a stamp, that of
/// the reading.
/// `wallAhead` is wall minus monotonic time at the request. If the difference has changed since, the wall
/// clock was set, and the stamp is ignored.
[[nodiscard]] double receiveTime(const ReceiveReadings& readings, double wallAhead);

} // namespace tarnwick
