// The run loop of programs without a toolkit, on standalone Asio.
#pragma once

#include "core/RunLoop.h"

namespace tarnwick {

class AsioRunLoop final : public RunLoop {
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

    [[nodiscard]] double now() const override;
    [[nodiscard]] WallTime wallNow() const override;
    void post(Task task) override;
    [[nodiscard]] Handle after(double delay, Task task) override;
    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override;
    [[nodiscard]] Handle everyRoughly(
        double firstFire, double interval, double tolerance, Task task) override;
    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override;
    [[nodiscard]] bool detach(std::function<Task()> work) override;

private:
    struct Context;
    std::shared_ptr<Context> context_;
};

} // namespace tarnwick
