#include "core/Pinger/ReceiveTime.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

/// Seconds. Slewing moves the clock by less between a request and its answer.
constexpr double clockWasSet = 0.01;

} // namespace

double receiveTime(const ReceiveReadings& readings, double wallAhead) {
    if (!readings.stamp || std::abs(readings.wall - readings.monotonic - wallAhead) > clockWasSet) {
        return readings.monotonic;
    }
    return readings.monotonic - std::max(readings.wall - *readings.stamp, 0.0);
}

} // namespace tarnwick
