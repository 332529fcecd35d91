// The run loop of both programs, on epoll.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"
#include "platform/loop/Alarm.h"
#include "platform/loop/DescriptorWatches.h"
#include "platform/loop/Mailbox.h"
#include "platform/loop/TimerQueue.h"

#include <memory>
#include <optional>
#include <sys/epoll.h>

namespace tarnwick {

/// A program runs the loop (`run`), or lets a toolkit's event loop host it: that one waits until `descriptor`
/// is readable and then calls `runReady`. The toolkit may run a nested event loop inside a task: timers,
/// posted tasks and the other watches go on there, and no task is run inside itself.
class EpollRunLoop final : public RunLoop {
public:
    /// Throws std::system_error when the system gives no descriptors.
    EpollRunLoop();
    /// Returns at once, even while detached work is running.
    ~EpollRunLoop() override;

    /// Runs tasks on the calling thread, which becomes the main thread, until `stop`.
    void run();

    /// Ends `run` after the task that is running. Called while the loop does not run, it makes the next `run`
    /// return at once.
    void stop() { isStopped_ = true; }

    /// Readable while `runReady` has something to run. The loop owns it; its number never changes.
    [[nodiscard]] int descriptor() const { return epoll_.get(); }

    /// Runs one turn of what is ready now, if anything; never waits.
    void runReady();

    [[nodiscard]] double now() const override;
    [[nodiscard]] WallTime wallNow() const override;
    void post(Task task) override;
    [[nodiscard]] Handle after(double delay, Task task) override;
    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override;
    [[nodiscard]] Handle everyRoughly(
        double firstFire, double interval, double tolerance, Task task) override;
    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override;
    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override;
    [[nodiscard]] bool detach(std::function<Task()> work) override;

private:
    class OwnRun;

    void turn();
    [[nodiscard]] std::optional<epoll_event> nextEvent(int milliseconds) const;
    void runEvent(const std::optional<epoll_event>& event);
    void runPosted();
    void timersChanged();
    void addToEpoll(int descriptor) const;

    FileDescriptor epoll_;
    std::shared_ptr<Mailbox> mailbox_; ///< shared with the detached threads
    Alarm alarm_;
    TimerQueue timers_;
    DescriptorWatches watches_;
    bool isRunning_ = false; ///< inside `run`: the alarm is set once before each wait
    bool isStopped_ = false;
};

} // namespace tarnwick
