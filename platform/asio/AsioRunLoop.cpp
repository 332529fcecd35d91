#include "platform/asio/AsioRunLoop.h"

#include "core/FileDescriptor.h"
#include "core/MonotonicClock.h"
#include "platform/loop/TimerQueue.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <array>
#include <chrono>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace tarnwick {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

using WakeUp = std::optional<std::chrono::nanoseconds>;

/// Wakes the thread for the timers.
///
/// When a timer of the library's expires, the library at once arms the system's for the next one that it
/// knows of. So two take turns, and the second already waits for the wake-up after the next: with one alone,
/// the system's timer would be armed twice each time.
class Alarm {
public:
    Alarm(asio::io_context& context, std::function<void()> onTime)
        : turns_{Turn{.timer = asio::steady_timer(context)}, Turn{.timer = asio::steady_timer(context)}},
          onTime_(std::move(onTime)) {}

    void set(WakeUp next, WakeUp following) {
        const std::size_t first = turns_[1].time == next ? 1 : 0;
        wait(turns_[first], next);
        wait(turns_[1 - first], following);
    }

private:
    struct Turn {
        asio::steady_timer timer;
        WakeUp time = std::nullopt;
    };

    void wait(Turn& turn, WakeUp time) {
        if (turn.time == time) {
            return;
        }
        turn.time = time;
        // Moving the time cancels the wait before.
        turn.timer.expires_at(Clock::time_point(time.value_or(std::chrono::nanoseconds::zero())));
        if (time) {
            turn.timer.async_wait([this, &turn](const asio::error_code& error) {
                if (!error) {
                    turn.time.reset();
                    onTime_();
                }
            });
        }
    }

    std::array<Turn, 2> turns_;
    std::function<void()> onTime_;
};

class Watch : public std::enable_shared_from_this<Watch> {
public:
    using WaitType = asio::posix::descriptor_base::wait_type;

    Watch(asio::io_context& context, int descriptor, WaitType type, RunLoop::Task task)
        : descriptor_(context, descriptor), type_(type), task_(std::move(task)) {}

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
        descriptor_.async_wait(type_, [weakSelf = weak_from_this()](const asio::error_code& error) {
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
    WaitType type_;
    bool hasEnded_ = false;
    RunLoop::Task task_;
};

/// The handle that callers own.
class WatchHandle final : public RunLoop::Registration {
public:
    /// `duplicate` is what is watched in place of the caller's descriptor, if anything.
    explicit WatchHandle(std::shared_ptr<Watch> watch, FileDescriptor duplicate = {})
        : duplicate_(std::move(duplicate)), watch_(std::move(watch)) {}

    WatchHandle(const WatchHandle&) = delete;
    WatchHandle& operator=(const WatchHandle&) = delete;

    // NOLINTNEXTLINE(bugprone-exception-escape): releasing fails only for a descriptor that is not open.
    ~WatchHandle() override { watch_->end(); }

private:
    FileDescriptor duplicate_;
    std::shared_ptr<Watch> watch_;
};

} // namespace

/// Shared with the detached threads, which find the loop closed when it has gone.
struct AsioRunLoop::Context {
    // One thread runs it; others only post.
    asio::io_context io{1};
    asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(io);
    TimerQueue timers{MonotonicClock::now, [this] { alarm.set(timers.wakeUp(), timers.wakeUpAfterNext()); }};
    Alarm alarm{io, [this] { timers.runDue(); }};
    std::mutex mutex;
    bool isOpen = true;
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

void AsioRunLoop::post(Task task) {
    asio::post(context_->io, std::move(task));
}

TimerQueue& AsioRunLoop::timers() {
    return context_->timers;
}

RunLoop::Handle AsioRunLoop::watchReadable(int descriptor, Task task) {
    try {
        auto watch =
            std::make_shared<Watch>(context_->io, descriptor, Watch::WaitType::wait_read, std::move(task));
        watch->start();
        return std::make_unique<WatchHandle>(std::move(watch));
    } catch (const asio::system_error&) {
        return nullptr;
    }
}

/// The library takes a descriptor once only, and the caller may watch it for reading too: so this watches a
/// duplicate.
RunLoop::Handle AsioRunLoop::watchWritable(int descriptor, Task task) {
    try {
        FileDescriptor duplicate(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
        auto watch = std::make_shared<Watch>(
            context_->io, duplicate.get(), Watch::WaitType::wait_write, std::move(task));
        watch->start();
        return std::make_unique<WatchHandle>(std::move(watch), std::move(duplicate));
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
