#include "platform/qt/QtRunLoop.h"

#include "core/FileDescriptor.h"
#include "core/MonotonicClock.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <system_error>
#include <thread>
#include <utility>

namespace tarnwick {

namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

FileDescriptor opened(int descriptor) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "run loop");
    }
    return FileDescriptor(descriptor);
}

/// Shared by the handle and, while it runs, by the task itself, which may destroy the handle.
class Watch : public std::enable_shared_from_this<Watch> {
public:
    Watch(QObject* parent, int descriptor, QSocketNotifier::Type type, RunLoop::Task task)
        : notifier_(new QSocketNotifier(descriptor, type, parent)), task_(std::move(task)) {}

    void start() {
        QObject::connect(notifier_, &QSocketNotifier::activated, notifier_, [weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) {
                self->run();
            }
        });
    }

    /// Lets go of the descriptor at once; the notifier may be in the middle of its signal.
    void end() {
        notifier_->setEnabled(false);
        notifier_->deleteLater();
        notifier_ = nullptr;
    }

private:
    void run() {
        if (isRunning_) {
            // A descriptor that is still ready would keep an event loop inside the task busy.
            notifier_->setEnabled(false);
            return;
        }
        isRunning_ = true;
        task_();
        isRunning_ = false;
        if (notifier_ != nullptr) {
            notifier_->setEnabled(true);
        }
    }

    QSocketNotifier* notifier_; ///< its parent's; none after the end
    bool isRunning_ = false;
    RunLoop::Task task_;
};

/// The handle that callers own.
class WatchHandle final : public RunLoop::Registration {
public:
    explicit WatchHandle(std::shared_ptr<Watch> watch) : watch_(std::move(watch)) {}

    WatchHandle(const WatchHandle&) = delete;
    WatchHandle& operator=(const WatchHandle&) = delete;

    ~WatchHandle() override { watch_->end(); }

private:
    std::shared_ptr<Watch> watch_;
};

} // namespace

/// Wakes the thread for the timers. The toolkit's own are up to two milliseconds late; the kernel's, waited
/// for like any other input, are ten times as exact and are set once for each wake-up.
class QtRunLoop::Alarm {
public:
    explicit Alarm(std::function<void()> onTime)
        : timer_(opened(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))),
          notifier_(timer_.get(), QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, std::move(onTime));
    }

    /// Until it is set anew, an alarm that has gone off goes off again: an event loop inside a task hears it
    /// too.
    void set(std::optional<nanoseconds> time) {
        if (time == time_) {
            return;
        }
        time_ = time;
        // Ends the expiry as well, so nothing needs to be read. Zero means never.
        const nanoseconds value = time ? std::max(*time, nanoseconds(1)) : nanoseconds::zero();
        const auto whole = std::chrono::duration_cast<seconds>(value);
        itimerspec setting{};
        setting.it_value.tv_sec = whole.count();
        setting.it_value.tv_nsec = (value - whole).count();
        ::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
    }

private:
    FileDescriptor timer_;
    QSocketNotifier notifier_;
    std::optional<nanoseconds> time_;
};

/// The posted tasks. Shared with the detached threads, which find it closed when the loop has gone; no other
/// thread than the main one ever comes near the toolkit.
class QtRunLoop::Mailbox {
public:
    [[nodiscard]] int descriptor() const { return notEmpty_.get(); }

    void put(Task task) {
        const std::lock_guard lock(mutex_);
        if (!isOpen_) {
            return;
        }
        if (tasks_.empty()) {
            ::eventfd_write(notEmpty_.get(), 1);
        }
        tasks_.push_back(std::move(task));
    }

    /// Runs what waits now. The descriptor stays readable for as long as any does, so that an event loop
    /// inside a task runs the others.
    void runWaiting() {
        for (std::size_t count = size(); count > 0; --count) {
            if (const Task task = take()) {
                task();
            }
        }
    }

    void close() {
        std::deque<Task> dropped; // destroyed without the lock: what they hold may post
        const std::lock_guard lock(mutex_);
        isOpen_ = false;
        dropped.swap(tasks_);
    }

private:
    [[nodiscard]] std::size_t size() {
        const std::lock_guard lock(mutex_);
        return tasks_.size();
    }

    [[nodiscard]] Task take() {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty()) {
            return nullptr;
        }
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        if (tasks_.empty()) {
            eventfd_t count = 0;
            ::eventfd_read(notEmpty_.get(), &count);
        }
        return task;
    }

    FileDescriptor notEmpty_ = opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    std::mutex mutex_;
    bool isOpen_ = true;
    std::deque<Task> tasks_;
};

QtRunLoop::QtRunLoop()
    : mailbox_(std::make_shared<Mailbox>()),
      timers_(MonotonicClock::now, [this] { alarm_->set(timers_.wakeUp()); }),
      alarm_(std::make_unique<Alarm>([this] { timers_.runDue(); })) {
    const auto* posted = new QSocketNotifier(mailbox_->descriptor(), QSocketNotifier::Read, &toolkitSide_);
    QObject::connect(posted, &QSocketNotifier::activated, posted, [this] { mailbox_->runWaiting(); });
}

QtRunLoop::~QtRunLoop() {
    mailbox_->close();
}

void QtRunLoop::post(Task task) {
    mailbox_->put(std::move(task));
}

RunLoop::Handle QtRunLoop::watchReadable(int descriptor, Task task) {
    return watch(descriptor, false, std::move(task));
}

RunLoop::Handle QtRunLoop::watchWritable(int descriptor, Task task) {
    return watch(descriptor, true, std::move(task));
}

RunLoop::Handle QtRunLoop::watch(int descriptor, bool forWriting, Task task) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
        return nullptr;
    }
    const auto type = forWriting ? QSocketNotifier::Write : QSocketNotifier::Read;
    auto watch = std::make_shared<Watch>(&toolkitSide_, descriptor, type, std::move(task));
    watch->start();
    return std::make_unique<WatchHandle>(std::move(watch));
}

bool QtRunLoop::detach(std::function<Task()> work) {
    auto run = [mailbox = mailbox_, work = std::move(work)] { mailbox->put(work()); };
    try {
        std::thread(std::move(run)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

} // namespace tarnwick
