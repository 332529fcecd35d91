#include "tests/simulation/VirtualRunLoop.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class VirtualRunLoop::TimerHandle final : public Registration {
public:
    TimerHandle(VirtualRunLoop& loop, std::uint64_t key) : loop_(loop), key_(key) {}

    TimerHandle(const TimerHandle&) = delete;
    TimerHandle& operator=(const TimerHandle&) = delete;

    ~TimerHandle() override { loop_.timers_.erase(key_); }

private:
    VirtualRunLoop& loop_;
    std::uint64_t key_;
};

class VirtualRunLoop::WatchHandle final : public Registration {
public:
    WatchHandle(Watches& watches, std::uint64_t key) : watches_(watches), key_(key) {}

    WatchHandle(const WatchHandle&) = delete;
    WatchHandle& operator=(const WatchHandle&) = delete;

    ~WatchHandle() override { watches_.erase(key_); }

private:
    Watches& watches_;
    std::uint64_t key_;
};

void VirtualRunLoop::advance(double seconds) {
    const double end = now_ + seconds;
    runPosted();
    for (auto timer = nextTimer(); timer != timers_.end() && timer->second.fireTime <= end;
         timer = nextTimer()) {
        now_ = std::max(now_, timer->second.fireTime);
        fire(timer);
        runPosted();
    }
    now_ = std::max(now_, end);
}

void VirtualRunLoop::sleep(double seconds) {
    wallAtStart_ += std::chrono::duration_cast<WallTime::duration>(std::chrono::duration<double>(seconds));
}

void VirtualRunLoop::runWatches(const Watches& watches, int descriptor) {
    std::vector<std::weak_ptr<Task>> tasks;
    for (const auto& [key, watch] : watches) {
        if (watch.first == descriptor) {
            tasks.push_back(watch.second);
        }
    }
    for (const auto& weakTask : tasks) {
        if (const auto task = weakTask.lock()) {
            (*task)();
        }
    }
}

RunLoop::WallTime VirtualRunLoop::wallNow() const {
    return wallAtStart_ + std::chrono::duration_cast<WallTime::duration>(std::chrono::duration<double>(now_));
}

void VirtualRunLoop::post(Task task) {
    posted_.push_back(std::move(task));
}

RunLoop::Handle VirtualRunLoop::after(double delay, Task task) {
    return addTimer(now_ + std::max(delay, 0.0), 0, std::move(task));
}

RunLoop::Handle VirtualRunLoop::every(double firstFire, double interval, Task task) {
    return addTimer(firstFire, interval, std::move(task));
}

RunLoop::Handle VirtualRunLoop::everyRoughly(double firstFire, double interval, double tolerance, Task task) {
    largestTolerance_ = std::max(largestTolerance_, tolerance);
    return every(firstFire, interval, std::move(task));
}

RunLoop::Handle VirtualRunLoop::addTimer(double fireTime, double interval, Task task) {
    const std::uint64_t key = nextKey_++;
    timers_.emplace(
        key, Timer{
                 .fireTime = fireTime,
                 .firstFire = fireTime,
                 .interval = interval,
                 .task = std::make_shared<Task>(std::move(task)),
             });
    return std::make_unique<TimerHandle>(*this, key);
}

RunLoop::Handle VirtualRunLoop::watchReadable(int descriptor, Task task) {
    return addWatch(readingWatches_, descriptor, std::move(task));
}

RunLoop::Handle VirtualRunLoop::watchWritable(int descriptor, Task task) {
    return addWatch(writingWatches_, descriptor, std::move(task));
}

RunLoop::Handle VirtualRunLoop::addWatch(Watches& watches, int descriptor, Task task) {
    if (std::ranges::any_of(watches, [&](const auto& entry) { return entry.second.first == descriptor; })) {
        return nullptr;
    }
    const std::uint64_t key = nextKey_++;
    watches.emplace(key, std::pair(descriptor, std::make_shared<Task>(std::move(task))));
    return std::make_unique<WatchHandle>(watches, key);
}

bool VirtualRunLoop::detach(std::function<Task()> work) {
    if (!hasThreads) {
        return false;
    }
    if (holdsDetachedWork_) {
        held_.push_back(std::move(work));
    } else {
        post(work());
    }
    return true;
}

void VirtualRunLoop::releaseDetachedWork() {
    holdsDetachedWork_ = false;
    for (const auto& work : std::exchange(held_, {})) {
        post(work());
    }
}

void VirtualRunLoop::runPosted() {
    while (!posted_.empty()) {
        const Task task = std::move(posted_.front());
        posted_.pop_front();
        task();
    }
}

std::map<std::uint64_t, VirtualRunLoop::Timer>::iterator VirtualRunLoop::nextTimer() {
    return std::ranges::min_element(
        timers_, {}, [](const auto& entry) { return std::pair(entry.second.fireTime, entry.first); });
}

void VirtualRunLoop::fire(std::map<std::uint64_t, Timer>::iterator timer) {
    // Held here: the task may destroy its own handle.
    const std::shared_ptr<Task> task = timer->second.task;
    Timer& state = timer->second;
    if (state.interval > 0) {
        state.fires = std::max(state.fires, std::floor((now_ - state.firstFire) / state.interval)) + 1;
        state.fireTime = state.firstFire + state.fires * state.interval;
    } else {
        state.fireTime = std::numeric_limits<double>::infinity();
    }
    (*task)();
}

} // namespace tarnwick::simulation
