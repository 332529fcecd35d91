// The timers of a run loop. Its owner does the waiting.
#pragma once

#include "core/RunLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace tarnwick {

/// Keeps what `RunLoop` promises of timers. It starts no thread: its owner waits until `wakeUp` and then
/// calls `runDue`. Main thread; the handles must not outlive it.
class TimerQueue {
public:
    using Clock = std::function<double()>;

    struct Schedule {
        double firstFire = 0;
        double interval = 0;  ///< 0: once
        double tolerance = 0; ///< how late it may be
    };

    /// All times are seconds on `clock`. `onChange` is called when the wake-up may have moved: after each
    /// timer that comes or goes and after each run of what was due.
    TimerQueue(Clock clock, std::function<void()> onChange);

    TimerQueue(const TimerQueue&) = delete;
    TimerQueue& operator=(const TimerQueue&) = delete;

    [[nodiscard]] RunLoop::Handle add(const Schedule& schedule, RunLoop::Task task);

    /// When to call `runDue` next, as time since the clock's zero; nothing when no timer waits.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> wakeUp() const;

    /// Runs each timer that is due once, the punctual ones first. A task may run a nested event loop that
    /// calls this again: a task that has not returned is not run again then.
    void runDue();

private:
    struct Timer;
    class Registration;

    [[nodiscard]] std::shared_ptr<Timer> firstDue(double now, std::uint64_t endKey) const;
    [[nodiscard]] double earliestDeadline() const;
    void fire(Timer& timer);
    void remove(std::uint64_t key);

    Clock clock_;
    std::function<void()> onChange_;
    std::map<std::uint64_t, std::shared_ptr<Timer>> timers_; ///< in the order of their making
    std::uint64_t nextKey_ = 0;
};

} // namespace tarnwick
