// When a datagram really arrived, although the program may have come to read it late.
#pragma once

#include <optional>

namespace tarnwick {

/// Three readings taken together, right after the datagram was read.
struct ReceiveReadings {
    double monotonic = 0;                       ///< seconds on the monotonic clock
    double wall = 0;                            ///< seconds on the wall clock
    std::optional<double> stamp = std::nullopt; ///< the kernel's own wall-clock stamp of the arrival
};

/// The reading of the monotonic clock, unless the kernel's stamp shows that the thread was late: then the
/// time of the stamp. `wallAhead` is wall minus monotonic as of an earlier moment: when it has changed, the
/// wall clock has been set and the stamp says nothing. Monotonic seconds.
[[nodiscard]] double receiveTime(const ReceiveReadings& readings, double wallAhead);

} // namespace tarnwick
