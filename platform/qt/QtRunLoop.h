// The run loop of the desktop program, on the toolkit's event loop.
#pragma once

#include "platform/loop/SystemRunLoop.h"

#include <QObject>

#include <memory>

namespace tarnwick {

/// Its tasks run wherever the toolkit handles events, so also while a dialog or a menu runs an event loop of
/// its own, even inside a task. No task is run inside itself. A QCoreApplication exists and outlives it.
class QtRunLoop final : public SystemRunLoop {
public:
    /// Throws std::system_error when the system gives no descriptors.
    QtRunLoop();
    /// Returns at once, whatever detached work is still running.
    ~QtRunLoop() override;

    void post(Task task) override;
    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override;
    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override;
    [[nodiscard]] bool detach(std::function<Task()> work) override;

private:
    class Alarm;
    class Mailbox;

    [[nodiscard]] TimerQueue& timers() override { return timers_; }

    [[nodiscard]] Handle watch(int descriptor, bool forWriting, Task task);

    std::shared_ptr<Mailbox> mailbox_;
    TimerQueue timers_;
    std::unique_ptr<Alarm> alarm_;
    QObject toolkitSide_; ///< owns what listens to the toolkit
};

} // namespace tarnwick
