#include "core/MonotonicClock.h"

#include <ctime>

namespace tarnwick::MonotonicClock {

double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace tarnwick::MonotonicClock
