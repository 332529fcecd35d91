// A loop whose clock a test puts forward, as if the thread had been busy.
#pragma once

#include "core/RunLoop.h"

#include <functional>
#include <utility>

namespace tarnwick::test {

/// The timers are those of `loop`, which outlives it: they do not notice.
class ClockAhead final : public RunLoop {
public:
    explicit ClockAhead(RunLoop& loop) : loop_(loop) {}

    void putForward(double seconds) { ahead_ += seconds; }

    [[nodiscard]] double now() const override { return loop_.now() + ahead_; }

    [[nodiscard]] WallTime wallNow() const override { return loop_.wallNow(); }

    void post(Task task) override { loop_.post(std::move(task)); }

    [[nodiscard]] Handle after(double delay, Task task) override {
        return loop_.after(delay, std::move(task));
    }

    [[nodiscard]] Handle every(double firstFire, double interval, Task task) override {
        return loop_.every(firstFire - ahead_, interval, std::move(task));
    }

    [[nodiscard]] Handle watchReadable(int descriptor, Task task) override {
        return loop_.watchReadable(descriptor, std::move(task));
    }

    [[nodiscard]] Handle watchWritable(int descriptor, Task task) override {
        return loop_.watchWritable(descriptor, std::move(task));
    }

    [[nodiscard]] bool detach(std::function<Task()> work) override { return loop_.detach(std::move(work)); }

private:
    RunLoop& loop_;
    double ahead_ = 0;
};

} // namespace tarnwick::test
