#include "platform/loop/SystemRunLoop.h"

#include "core/MonotonicClock.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarnwick {

double SystemRunLoop::now() const {
    return MonotonicClock::now();
}

RunLoop::WallTime SystemRunLoop::wallNow() const {
    return std::chrono::system_clock::now();
}

RunLoop::Handle SystemRunLoop::after(double delay, Task task) {
    return timers().add({.firstFire = now() + std::max(delay, 0.0)}, std::move(task));
}

RunLoop::Handle SystemRunLoop::every(double firstFire, double interval, Task task) {
    return timers().add({.firstFire = firstFire, .interval = interval}, std::move(task));
}

RunLoop::Handle SystemRunLoop::everyRoughly(double firstFire, double interval, double tolerance, Task task) {
    return timers().add(
        {.firstFire = firstFire, .interval = interval, .tolerance = tolerance}, std::move(task));
}

} // namespace tarnwick
