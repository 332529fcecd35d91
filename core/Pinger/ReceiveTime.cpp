#include "core/Pinger/ReceiveTime.h"

#include <cmath>

namespace tarnwick {

namespace {

/// A thread that was idle reads within microseconds.
constexpr double ordinaryLag = 0.001;
/// More than slewing can do between a request and its answer.
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
