// Tells when the machine goes to sleep and when it has woken.
#pragma once

#include <functional>

namespace tarnwick {

/// A sleep and the waking from it are told once each, in this order, however often the system tells of them;
/// of a sleep that began before the start nothing is told. Main thread.
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
