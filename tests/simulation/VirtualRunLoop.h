// A run loop in virtual time: waiting costs nothing.
#pragma once

#include "core/RunLoop.h"

#include <cstdint>
#include <deque>
#include <map>

namespace tarnwick::simulation {

/// Advanced by hand. Detached work runs at once, inside `detach`, unless it is held back; its result comes
/// through the queue like any other.
class VirtualRunLoop final : public RunLoop {
public:
    /// Runs all that is due within the next `seconds`, in the order of its times, then stands at that time.
    void advance(double seconds);

    /// Runs all that is due now.
    void runPending() { advance(0); }

    /// As if the machine were asleep: the wall clock goes on, the monotonic one and the timers stand still.
    void sleep(double seconds);

    /// Time goes by while nothing runs, as in a stopped process; inside a task, as on a busy thread.
    void stall(double seconds) { now_ += seconds; }

    /// Sets the wall clock; no time passes.
    void setWallClock(WallTime time) { wallAtStart_ += time - wallNow(); }

    /// Makes a watched descriptor count as readable once.
    void makeReadable(int descriptor) { runWatches(readingWatches_, descriptor); }

    /// Makes a watched descriptor count as writable once.
    void makeWritable(int descriptor) { runWatches(writingWatches_, descriptor); }

    /// Seconds by which a timer of all that were made may be late; none is.
    [[nodiscard]] double largestTolerance() const { return largestTolerance_; }

    [[nodiscard]] std::size_t timerCount() const { return timers_.size(); }

    [[nodiscard]] double now() const override { return now_; }

    [[nodiscard]] WallTime wallNow() const override;
    void post(Task task) override;
    [[nodiscard]] Handle after(double delay, Task task) override;
    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override;
    [[nodiscard]] Handle everyRoughly(
        double firstFire, double interval, double tolerance, Task task) override;
    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override;
    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override;
    [[nodiscard]] bool detach(std::function<Task()> work) override;

    /// Lets the next `detach` calls fail, as when the system has no thread to give.
    bool hasThreads = true;

    /// From now on detached work hangs, as a lookup may for minutes.
    void holdDetachedWork() { holdsDetachedWork_ = true; }

    /// What hangs comes to its end, and so does later work, at once.
    void releaseDetachedWork();

    [[nodiscard]] std::size_t heldWork() const { return held_.size(); }

private:
    struct Timer {
        double fireTime;
        double firstFire;
        double interval; ///< 0: once
        double fires = 0;
        std::shared_ptr<Task> task;
    };

    using Watches = std::map<std::uint64_t, std::pair<int, std::shared_ptr<Task>>>;

    class TimerHandle;
    class WatchHandle;

    void runPosted();
    /// The timer that is due first, among equals the one made first.
    [[nodiscard]] std::map<std::uint64_t, Timer>::iterator nextTimer();
    void fire(std::map<std::uint64_t, Timer>::iterator timer);
    Handle addTimer(double fireTime, double interval, Task task);
    Handle addWatch(Watches& watches, int descriptor, Task task);
    static void runWatches(const Watches& watches, int descriptor);

    double now_ = 1000;
    double largestTolerance_ = 0;
    WallTime wallAtStart_ = WallTime(std::chrono::hours(24 * 365 * 50));
    std::deque<Task> posted_;
    bool holdsDetachedWork_ = false;
    std::deque<std::function<Task()>> held_;
    std::map<std::uint64_t, Timer> timers_;
    Watches readingWatches_;
    Watches writingWatches_;
    std::uint64_t nextKey_ = 0;
};

} // namespace tarnwick::simulation
