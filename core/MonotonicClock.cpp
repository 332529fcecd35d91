#include "core/MonotonicClock.h"

#include "core/ClockPair.h"

namespace tarnwick::MonotonicClock {

double now() {
    return secondsOn(CLOCK_MONOTONIC);
}

} // namespace tarnwick::MonotonicClock
