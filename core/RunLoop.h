// The run loop as the program sees it: timers, descriptors and clocks of one main thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace tarnwick {

/// Every task runs on the main thread. Only `post` may be called on another thread.
///
/// A `Handle` owns its timer or watch. Destroying it, also inside its own task, means that the task never
/// runs again. The loop outlives its handles.
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

    /// Monotonic seconds; the time of the wall clock. A simulated loop has simulated clocks.
    [[nodiscard]] virtual double now() const = 0;
    [[nodiscard]] virtual WallTime wallNow() const = 0;

    /// Runs `task` soon, never inside this call, in the order of the calls. Any thread.
    virtual void post(Task task) = 0;

    /// Runs `task` once, in `delay` seconds (soon when negative).
    [[nodiscard]] virtual Handle after(double delay, Task task) = 0;

    /// Runs `task` at firstFire + n * interval, in monotonic seconds (soon when past); `interval` is above 0.
    /// Each time is computed from the first, so lateness never adds up.
    /// Times missed while the thread was busy lead to one late call.
    [[nodiscard]] virtual Handle every(double firstFire, double interval, Task task) = 0;

    /// The same, but a call may be up to `tolerance` seconds late, to share a wake-up with another timer.
    /// A loop without this ability is punctual.
    [[nodiscard]] virtual Handle everyRoughly(
        double firstFire, double interval, double /*tolerance*/, Task task) {
        return every(firstFire, interval, std::move(task));
    }

    /// Runs `task` while `descriptor` has something to read (level-triggered); an error or the end of the
    /// other side counts as well. The caller keeps the descriptor open until the handle is gone. Null when
    /// the system can't watch the descriptor (a regular file, `/dev/null`), or when the descriptor already
    /// has a watch of this kind.
    [[nodiscard]] virtual Handle watchReadable(int descriptor, Task task) = 0;

    /// The same while `descriptor` takes data without blocking. A descriptor may have one watch of each kind.
    [[nodiscard]] virtual Handle watchWritable(int descriptor, Task task) = 0;

    /// Runs `work` on a new thread, then the task that it returns on the main thread. Nothing waits for the
    /// work, not even the end of the program, so it must own all that it uses.
    /// False when the system has no thread to give: then nothing runs.
    [[nodiscard]] virtual bool detach(std::function<Task()> work) = 0;
};

} // namespace tarnwick
