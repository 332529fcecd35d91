#include "platform/loop/TimerQueue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();

/// Further away than any machine runs, and still representable in nanoseconds.
constexpr double longestWait = 9e9;

/// Rounded up, so that what was waited for is due by then.
std::optional<std::chrono::nanoseconds> sinceZero(double time) {
    if (time == never) {
        return std::nullopt;
    }
    return std::chrono::ceil<std::chrono::nanoseconds>(
        std::chrono::duration<double>(std::clamp(time, 0.0, longestWait)));
}

} // namespace

struct TimerQueue::Timer {
    Timer(const Schedule& times, RunLoop::Task whatRuns)
        : schedule(times), due(times.firstFire), task(std::move(whatRuns)) {}

    /// To the first fire time after `now`: always a later one, however the division rounds.
    void moveOn(double now) {
        if (schedule.interval > 0) {
            const double passed = std::floor((now - schedule.firstFire) / schedule.interval);
            fires = std::max(fires, passed) + 1;
        }
        due = dueAt(fires);
    }

    /// The latest time at which it must run. A running timer has no deadline.
    [[nodiscard]] double deadline() const { return isRunning ? never : due + schedule.tolerance; }

    [[nodiscard]] double dueAt(double number) const {
        return schedule.interval > 0 ? schedule.firstFire + number * schedule.interval : never;
    }

    Schedule schedule;
    double due;
    double fires = 0; ///< number of the latest fire time, counted from the first
    bool isRunning = false;
    RunLoop::Task task;
};

/// The handle that callers own.
class TimerQueue::Registration final : public RunLoop::Registration {
public:
    Registration(TimerQueue& queue, std::uint64_t key) : queue_(queue), key_(key) {}

    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    ~Registration() override { queue_.remove(key_); }

private:
    TimerQueue& queue_;
    std::uint64_t key_;
};

TimerQueue::TimerQueue(Clock clock, std::function<void()> onChange)
    : clock_(std::move(clock)), onChange_(std::move(onChange)) {
}

RunLoop::Handle TimerQueue::add(const Schedule& schedule, RunLoop::Task task) {
    const std::uint64_t key = nextKey_++;
    timers_.emplace(key, std::make_shared<Timer>(schedule, std::move(task)));
    onChange_();
    return std::make_unique<Registration>(*this, key);
}

std::optional<std::chrono::nanoseconds> TimerQueue::wakeUp() const {
    return sinceZero(earliestDeadline());
}

void TimerQueue::runDue() {
    // Timers that the tasks add run at the next call, so that other events come in between.
    const std::uint64_t endKey = nextKey_;
    const double now = clock_();
    while (const auto timer = firstDue(now, endKey)) {
        fire(*timer);
    }
    onChange_();
}

std::shared_ptr<TimerQueue::Timer> TimerQueue::firstDue(double now, std::uint64_t endKey) const {
    const auto order = [](const Timer& timer) { return std::tuple(timer.schedule.tolerance > 0, timer.due); };
    std::shared_ptr<Timer> first;
    for (auto entry = timers_.begin(); entry != timers_.lower_bound(endKey); ++entry) {
        const auto& timer = entry->second;
        const bool isDue = !timer->isRunning && timer->due <= now;
        if (isDue && (!first || order(*timer) < order(*first))) {
            first = timer;
        }
    }
    return first;
}

/// Wakes for all timers: one with tolerance that is due by then runs along.
double TimerQueue::earliestDeadline() const {
    double earliest = never;
    for (const auto& [key, timer] : timers_) {
        earliest = std::min(earliest, timer->deadline());
    }
    return earliest;
}

void TimerQueue::fire(Timer& timer) {
    timer.moveOn(clock_());
    timer.isRunning = true;
    timer.task();
    timer.isRunning = false;
}

void TimerQueue::remove(std::uint64_t key) {
    // Destroyed at the end: what the task holds may be handles of other timers.
    const auto removed = timers_.extract(key);
    onChange_();
}

} // namespace tarnwick
