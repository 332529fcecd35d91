// What the program takes from a dispatcher: one main thread with its timers, descriptors and clock.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace tarnwick {

/// The main queue. Everything but `post` is called on the main thread, and every task runs there.
///
/// A `Handle` owns its timer or watch: destroying it cancels, also from inside its own task, and after that
/// the task is never run again. Handles must not outlive the loop.
class RunLoop {
public:
    using Task = std::function<void()>;
    using WallTime = std::chrono::system_clock::time_point;

    class Registration {
    public:
        Registration() = default;
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        virtual ~Registration() = default;
    };

    using Handle = std::unique_ptr<Registration>;

    RunLoop() = default;
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    virtual ~RunLoop() = default;

    /// Monotonic seconds; the wall clock's time. Simulated together with the timers.
    [[nodiscard]] virtual double now() const = 0;
    [[nodiscard]] virtual WallTime wallNow() const = 0;

    /// Runs `task` soon, never from inside this call, in the order of the calls. Any thread.
    virtual void post(Task task) = 0;

    /// Runs `task` once, `delay` seconds from now (at once when negative).
    [[nodiscard]] virtual Handle after(double delay, Task task) = 0;

    /// Runs `task` at `firstFire` (monotonic seconds; at once when past) and then at firstFire + n *
    /// interval. Each time is computed from the first, so that lateness never adds up. Times missed while the
    /// thread was busy or stopped are skipped: one late call stands for all of them. `interval` is above 0 s.
    [[nodiscard]] virtual Handle every(double firstFire, double interval, Task task) = 0;

    /// The same, but each call may come up to `tolerance` seconds late, together with another timer's: work
    /// that can wait a little need not wake the processor by itself. A loop that can't do so is punctual.
    [[nodiscard]] virtual Handle everyRoughly(
        double firstFire, double interval, double /*tolerance*/, Task task) {
        return every(firstFire, interval, std::move(task));
    }

    /// Runs `task` for as long as `descriptor` has something to read (level-triggered). The descriptor stays
    /// its owner's, who keeps it open until the handle is gone. No handle when the system can't watch it.
    [[nodiscard]] virtual Handle watchReadable(int descriptor, Task task) = 0;

    /// The same for as long as `descriptor` takes data without blocking. One descriptor may be watched for
    /// both at the same time, by two handles.
    [[nodiscard]] virtual Handle watchWritable(int descriptor, Task task) = 0;

    /// Runs `work` on a thread of its own and then the task that it returns on the main thread. Work that
    /// never returns holds nothing up, the end of the program included: so it must own all that it touches.
    /// False when the system has no thread to give; then nothing runs.
    [[nodiscard]] virtual bool detach(std::function<Task()> work) = 0;
};

} // namespace tarnwick
