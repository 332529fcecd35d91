// Tells when the machine goes to sleep and when it has woken.
#pragma once

#include <functional>

namespace tarnwick {

/// Main thread.
class SleepMonitor {
public:
    struct Handlers {
        std::function<void()> willSleep; ///< the machine waits for it to return, within reason
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
