#include "platform/loop/EpollRunLoop.h"

#include "core/MonotonicClock.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <system_error>
#include <thread>
#include <utility>

namespace tarnwick {

namespace {

constexpr int forever = -1; // as a wait in milliseconds

} // namespace

/// While one exists, the loop decides when the thread waits. So it sets the alarm once before each wait, and
/// tasks posted by tasks need no signal. Otherwise the host may wait at any time, and the descriptor must
/// tell of every change at once.
class EpollRunLoop::OwnRun {
public:
    explicit OwnRun(EpollRunLoop& loop) : loop_(loop) { loop_.isRunning_ = true; }

    OwnRun(const OwnRun&) = delete;
    OwnRun& operator=(const OwnRun&) = delete;

    ~OwnRun() {
        loop_.isRunning_ = false;
        loop_.mailbox_->sleep();
        loop_.timersChanged();
    }

private:
    EpollRunLoop& loop_;
};

EpollRunLoop::EpollRunLoop()
    : epoll_(::epoll_create1(EPOLL_CLOEXEC)),
      mailbox_(std::make_shared<Mailbox>()),
      timers_(MonotonicClock::now, [this] { timersChanged(); }),
      watches_(epoll_.get()) {
    addToEpoll(mailbox_->descriptor());
    addToEpoll(alarm_.descriptor());
}

EpollRunLoop::~EpollRunLoop() {
    mailbox_->close();
}

void EpollRunLoop::run() {
    const OwnRun ownRun(*this);
    while (!isStopped_) {
        turn();
    }
    isStopped_ = false;
}

void EpollRunLoop::runReady() {
    runEvent(nextEvent(0));
    runPosted();
}

double EpollRunLoop::now() const {
    return MonotonicClock::now();
}

RunLoop::WallTime EpollRunLoop::wallNow() const {
    return std::chrono::system_clock::now();
}

void EpollRunLoop::post(Task task) {
    mailbox_->put(std::move(task));
}

RunLoop::Handle EpollRunLoop::after(double delay, Task task) {
    return timers_.add({.firstFire = now() + std::max(delay, 0.0)}, std::move(task));
}

RunLoop::Handle EpollRunLoop::every(double firstFire, double interval, Task task) {
    return timers_.add({.firstFire = firstFire, .interval = interval}, std::move(task));
}

RunLoop::Handle EpollRunLoop::everyRoughly(double firstFire, double interval, double tolerance, Task task) {
    return timers_.add(
        {.firstFire = firstFire, .interval = interval, .tolerance = tolerance}, std::move(task));
}

RunLoop::Handle EpollRunLoop::watchReadable(int descriptor, Task task) {
    return watches_.add(descriptor, DescriptorWatches::Kind::reading, std::move(task));
}

RunLoop::Handle EpollRunLoop::watchWritable(int descriptor, Task task) {
    return watches_.add(descriptor, DescriptorWatches::Kind::writing, std::move(task));
}

bool EpollRunLoop::detach(std::function<Task()> work) {
    auto run = [mailbox = mailbox_, work = std::move(work)] { mailbox->put(work()); };
    try {
        std::thread(std::move(run)).detach();
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

/// One event and the tasks posted until then: so neither keeps the other waiting.
void EpollRunLoop::turn() {
    alarm_.set(timers_.wakeUp());
    const auto event = nextEvent(mailbox_->sleepUnlessTasksWait() ? forever : 0);
    mailbox_->wake();
    runEvent(event);
    runPosted();
}

/// One at a time: a second one could be out of date after the first one's task. epoll goes round the
/// descriptors that are ready, so each has its turn.
std::optional<epoll_event> EpollRunLoop::nextEvent(int milliseconds) const {
    epoll_event event{};
    int count = 0;
    do {
        count = ::epoll_wait(epoll_.get(), &event, 1, milliseconds);
    } while (count == -1 && errno == EINTR);
    return count == 1 ? std::optional(event) : std::nullopt;
}

void EpollRunLoop::runEvent(const std::optional<epoll_event>& event) {
    if (!event || event->data.fd == mailbox_->descriptor()) {
        return;
    }
    if (event->data.fd == alarm_.descriptor()) {
        timers_.runDue();
    } else {
        watches_.run(*event);
    }
}

/// Tasks that these post wait for the next turn.
void EpollRunLoop::runPosted() {
    for (std::size_t count = mailbox_->size(); count > 0 && !isStopped_; --count) {
        if (const Task task = mailbox_->take()) {
            task();
        }
    }
}

void EpollRunLoop::timersChanged() {
    if (!isRunning_) {
        alarm_.set(timers_.wakeUp());
    }
}

void EpollRunLoop::addToEpoll(int descriptor) const {
    epoll_event request{.events = EPOLLIN, .data = {.fd = descriptor}};
    if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &request) == -1) {
        throw std::system_error(errno, std::generic_category(), "epoll");
    }
}

} // namespace tarnwick
