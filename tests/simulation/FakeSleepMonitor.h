// Sleep and wake as a test tells them.
#pragma once

#include "platform/SleepMonitor.h"

#include <utility>

namespace tarnwick::simulation {

class FakeSleepMonitor final : public SleepMonitor {
public:
    void start(Handlers handlers) override {
        ++starts_;
        handlers_ = std::move(handlers);
    }

    void goToSleep() const {
        if (handlers_.willSleep) {
            handlers_.willSleep();
        }
    }

    void wake() const {
        if (handlers_.didWake) {
            handlers_.didWake();
        }
    }

    [[nodiscard]] int starts() const { return starts_; }

private:
    int starts_ = 0;
    Handlers handlers_;
};

} // namespace tarnwick::simulation
