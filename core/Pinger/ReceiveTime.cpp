#include "core/Pinger/ReceiveTime.h"

#include <cmath>

namespace tarnwick {

namespace {

/// Seconds. An idle thread reads within microseconds.
constexpr double ordinaryLag = 0.001;
/// Seconds. Slewing moves the clock by less between a request and its answer.
constexpr double clockWasSet = 0.01;

} // namespace

double receiveTime(const ReceiveReadings& readings, double wallAhead) {
    if (!readings.stamp || std::abs(readings.wall - readings.monotonic - wallAhead) > clockWasSet) {
        return readings.monotonic;
    }
    const double lag = readings.wall - *readings.stamp;
    return lag > ordinaryLag ? readings.monotonic - lag : readings.monotonic;
}

} // namespace tarnwick
