#include "platform/asio/AsioRunLoop.h"

#include "core/MonotonicClock.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Further away than any program runs, and still representable.
constexpr double longestWait = 10.0 * 365 * 24 * 3600;

Clock::time_point timePoint(double monotonicSeconds) {
    const double limited = std::min(monotonicSeconds, MonotonicClock::now() + longestWait);
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(Seconds(limited)));
}

class Timer;

/// All timers, so that the patient ones find company.
class TimerRegistry {
public:
    void add(const std::shared_ptr<Timer>& timer);
    /// Runs the patient timers that are due.
    void runDue();
    /// The earliest time in this span at which a punctual timer wakes the thread anyway.
    [[nodiscard]] std::optional<double> nextWakeUp(double from, double to) const;

private:
    std::vector<std::weak_ptr<Timer>> timers_;
};

struct Schedule {
    double firstFire;
    double interval = 0;  ///< 0: once
    double tolerance = 0; ///< how late it may be; a timer with any is patient, one without is punctual
};

/// A timer and the chain of its waits, which hold it weakly.
class Timer : public std::enable_shared_from_this<Timer> {
public:
    Timer(asio::io_context& context, TimerRegistry& registry, const Schedule& schedule, RunLoop::Task task)
        : timer_(context),
          registry_(registry),
          schedule_(schedule),
          due_(schedule.firstFire),
          task_(std::move(task)) {}

    void wait() {
        // Moving the time cancels the wait before.
        timer_.expires_at(wakeUpTime());
        timer_.async_wait([weakSelf = weak_from_this()](const asio::error_code& error) {
            // Not due any more: it has run with a punctual one just before.
            if (const auto self = weakSelf.lock(); self && !error && self->isDue()) {
                self->fire();
                self->registry_.runDue();
            }
        });
    }

    void fire() {
        hasEnded_ = schedule_.interval <= 0;
        if (!hasEnded_) {
            // The fires missed meanwhile are passed over; never the same one twice, however the division
            // rounds.
            const double passed =
                std::floor((MonotonicClock::now() - schedule_.firstFire) / schedule_.interval);
            fires_ = std::max(fires_, passed) + 1;
            due_ = schedule_.firstFire + fires_ * schedule_.interval;
            wait();
        }
        task_();
    }

    /// The wait itself ends with this object, which lives until its task has returned.
    void end() { hasEnded_ = true; }

    [[nodiscard]] bool isPatient() const { return schedule_.tolerance > 0; }

    [[nodiscard]] bool isDue() const { return !hasEnded_ && timePoint(due_) <= Clock::now(); }

    [[nodiscard]] double due() const { return due_; }

private:
    /// A patient timer wakes up a moment after a punctual one, so that both are found expired by then, in
    /// this order.
    [[nodiscard]] Clock::time_point wakeUpTime() const {
        if (!isPatient()) {
            return timePoint(due_);
        }
        const double latest = due_ + schedule_.tolerance;
        return timePoint(registry_.nextWakeUp(due_, latest).value_or(latest)) + Clock::duration(1);
    }

    asio::steady_timer timer_;
    TimerRegistry& registry_;
    Schedule schedule_;
    double due_;
    double fires_ = 0; ///< number of the latest fire time, counted from the first
    bool hasEnded_ = false;
    RunLoop::Task task_;
};

void TimerRegistry::add(const std::shared_ptr<Timer>& timer) {
    std::erase_if(timers_, [](const auto& known) { return known.expired(); });
    timers_.push_back(timer);
}

void TimerRegistry::runDue() {
    // A copy: what runs may add timers.
    for (const auto& weakTimer : std::vector(timers_)) {
        if (const auto timer = weakTimer.lock(); timer && timer->isPatient() && timer->isDue()) {
            timer->fire();
        }
    }
}

std::optional<double> TimerRegistry::nextWakeUp(double from, double to) const {
    std::optional<double> next;
    for (const auto& weakTimer : timers_) {
        const auto timer = weakTimer.lock();
        if (timer && !timer->isPatient() && from <= timer->due() && timer->due() <= to) {
            next = std::min(timer->due(), next.value_or(to));
        }
    }
    return next;
}

class ReadWatch : public std::enable_shared_from_this<ReadWatch> {
public:
    ReadWatch(asio::io_context& context, int descriptor, RunLoop::Task task)
        : descriptor_(context, descriptor), task_(std::move(task)) {}

    /// The library makes the descriptor non-blocking when it first waits, as if to read from it by itself. A
    /// terminal shares that flag with everybody who writes to it, so it is put back at once.
    void start() {
        const int flags = ::fcntl(descriptor_.native_handle(), F_GETFL);
        wait();
        ::fcntl(descriptor_.native_handle(), F_SETFL, flags);
    }

    /// Lets go of the descriptor at once, also in the middle of the task: it is its owner's, who may close it
    /// next.
    void end() {
        hasEnded_ = true;
        descriptor_.release();
    }

private:
    void wait() {
        descriptor_.async_wait(
            asio::posix::descriptor_base::wait_read,
            [weakSelf = weak_from_this()](const asio::error_code& error) {
                const auto self = weakSelf.lock();
                if (!self || error || self->hasEnded_) {
                    return;
                }
                self->task_();
                if (!self->hasEnded_) {
                    self->wait();
                }
            });
    }

    asio::posix::stream_descriptor descriptor_;
    bool hasEnded_ = false;
    RunLoop::Task task_;
};

/// The handle that callers own.
template<class Held>
class Holder final : public RunLoop::Registration {
public:
    explicit Holder(std::shared_ptr<Held> held) : held_(std::move(held)) {}

    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    // NOLINTNEXTLINE(bugprone-exception-escape): releasing fails only for a descriptor that is not open.
    ~Holder() override { held_->end(); }

private:
    std::shared_ptr<Held> held_;
};

} // namespace

/// Shared with the detached threads, which find the loop closed when it has gone.
struct AsioRunLoop::Context {
    // One thread runs it; others only post.
    asio::io_context io{1};
    asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(io);
    TimerRegistry timers;
    std::mutex mutex;
    bool isOpen = true;

    std::shared_ptr<Timer> startTimer(const Schedule& schedule, Task task) {
        auto timer = std::make_shared<Timer>(io, timers, schedule, std::move(task));
        timer->wait();
        timers.add(timer);
        return timer;
    }
};

AsioRunLoop::AsioRunLoop() : context_(std::make_shared<Context>()) {
}

AsioRunLoop::~AsioRunLoop() {
    const std::lock_guard lock(context_->mutex);
    context_->isOpen = false;
}

void AsioRunLoop::run() {
    context_->io.run();
}

void AsioRunLoop::stop() {
    context_->io.stop();
}

bool AsioRunLoop::runOne(double seconds) {
    return context_->io.run_one_for(std::chrono::duration_cast<Clock::duration>(Seconds(seconds))) > 0;
}

double AsioRunLoop::now() const {
    return MonotonicClock::now();
}

RunLoop::WallTime AsioRunLoop::wallNow() const {
    return std::chrono::system_clock::now();
}

void AsioRunLoop::post(Task task) {
    asio::post(context_->io, std::move(task));
}

RunLoop::Handle AsioRunLoop::after(double delay, Task task) {
    const Schedule once{.firstFire = now() + std::max(delay, 0.0)};
    return std::make_unique<Holder<Timer>>(context_->startTimer(once, std::move(task)));
}

RunLoop::Handle AsioRunLoop::every(double firstFire, double interval, Task task) {
    const Schedule repeated{.firstFire = firstFire, .interval = interval};
    return std::make_unique<Holder<Timer>>(context_->startTimer(repeated, std::move(task)));
}

RunLoop::Handle AsioRunLoop::everyRoughly(double firstFire, double interval, double tolerance, Task task) {
    const Schedule rough{.firstFire = firstFire, .interval = interval, .tolerance = tolerance};
    return std::make_unique<Holder<Timer>>(context_->startTimer(rough, std::move(task)));
}

RunLoop::Handle AsioRunLoop::watchReadable(int descriptor, Task task) {
    try {
        auto watch = std::make_shared<ReadWatch>(context_->io, descriptor, std::move(task));
        watch->start();
        return std::make_unique<Holder<ReadWatch>>(std::move(watch));
    } catch (const asio::system_error&) {
        return nullptr;
    }
}

bool AsioRunLoop::detach(std::function<Task()> work) {
    auto run = [context = context_, work = std::move(work)] {
        Task result = work();
        const std::lock_guard lock(context->mutex);
        if (context->isOpen) {
            asio::post(context->io, std::move(result));
        }
    };
    try {
        std::thread(std::move(run)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

} // namespace tarnwick
