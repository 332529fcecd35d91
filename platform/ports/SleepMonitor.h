// Tells when the machine goes to sleep and when it has woken.
#pragma once

#include <functional>

namespace tarnwick {

/// Reports each sleep and then its end, once each, even if the system announces them several times. A sleep
/// that began before `start` is not reported. Main thread.
class SleepMonitor {
public:
    struct Handlers {
        std::function<void()> willSleep; ///< the machine waits up to some seconds for it to return
        std::function<void()> didWake;
    };

    SleepMonitor() = default;
    SleepMonitor(const SleepMonitor&) = delete;
    SleepMonitor& operator=(const SleepMonitor&) = delete;
    virtual ~SleepMonitor() = default;

    /// Called once.
    virtual void start(Handlers handlers) = 0;
};

} // namespace tarnwick
