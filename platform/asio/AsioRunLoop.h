// The run loop of programs without a toolkit, on standalone Asio.
#pragma once

#include "platform/loop/SystemRunLoop.h"

namespace tarnwick {

class AsioRunLoop final : public SystemRunLoop {
public:
    AsioRunLoop();
    /// Returns at once, whatever detached work is still running.
    ~AsioRunLoop() override;

    /// Runs tasks on the calling thread, which becomes the main thread, until `stop`.
    void run();
    /// Ends `run` after the present task.
    void stop();
    /// Waits for one task, or the timers that are due together, and runs them; false when none came within
    /// `seconds`.
    bool runOne(double seconds);

    void post(Task task) override;
    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override;
    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override;
    [[nodiscard]] bool detach(std::function<Task()> work) override;

private:
    struct Context;

    [[nodiscard]] TimerQueue& timers() override;

    std::shared_ptr<Context> context_;
};

} // namespace tarnwick
