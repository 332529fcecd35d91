// What the run loops of this system have in common: its clocks, and timers in a queue.
#pragma once

#include "core/RunLoop.h"
#include "platform/loop/TimerQueue.h"

namespace tarnwick {

class SystemRunLoop : public RunLoop {
public:
    [[nodiscard]] double now() const final;
    [[nodiscard]] WallTime wallNow() const final;
    [[nodiscard]] Handle after(double delay, Task task) final;
    [[nodiscard]] Handle every(double firstFire, double interval, Task task) final;
    [[nodiscard]] Handle everyRoughly(double firstFire, double interval, double tolerance, Task task) final;

protected:
    [[nodiscard]] virtual TimerQueue& timers() = 0;
};

} // namespace tarnwick
