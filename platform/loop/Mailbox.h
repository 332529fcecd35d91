// The tasks posted to a run loop, from any thread.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <cstddef>
#include <deque>
#include <mutex>

namespace tarnwick {

/// Detached threads share it with the loop, and find it closed when the loop is gone. `put` may be called on
/// any thread, everything else on the main thread only.
///
/// Its descriptor is readable while tasks wait. This need not hold while the main thread is awake: then that
/// thread looks for tasks before it waits, and the mailbox saves the system calls.
class Mailbox {
public:
    /// Throws std::system_error when the system gives no descriptor.
    Mailbox();

    [[nodiscard]] int descriptor() const { return signal_.get(); }

    /// Destroys the task when the mailbox is closed.
    void put(RunLoop::Task task);

    [[nodiscard]] std::size_t size();
    /// The task that waits longest; nothing when none does.
    [[nodiscard]] RunLoop::Task take();

    /// The main thread is awake from now on.
    void wake();
    /// The main thread is no longer awake; the descriptor tells of the tasks that wait.
    void sleep();
    /// The same if no tasks wait; otherwise the main thread stays awake, and the result is false.
    [[nodiscard]] bool sleepUnlessTasksWait();

    /// Destroys the tasks that wait. From now on nothing is taken in.
    void close();

private:
    void raiseSignal();

    FileDescriptor signal_;
    std::mutex mutex_;
    bool isOpen_ = true;
    bool isAwake_ = false;
    bool isSignalRaised_ = false;
    std::deque<RunLoop::Task> tasks_;
};

} // namespace tarnwick
