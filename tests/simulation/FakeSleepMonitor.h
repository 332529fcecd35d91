// Sleep and wake reported by the test.
#pragma once

#include "platform/ports/SleepMonitor.h"

#include <utility>

namespace tarnwick::simulation {

class FakeSleepMonitor final : public SleepMonitor {
public:
    void start(Handlers handlers) override {
        ++starts_;
        handlers_ = std::move(handlers);
        isAsleep_ = false;
    }

    void goToSleep() { become(true, handlers_.willSleep); }

    void wake() { become(false, handlers_.didWake); }

    [[nodiscard]] int starts() const { return starts_; }

private:
    void become(bool asleep, const std::function<void()>& handler) {
        if (starts_ > 0 && std::exchange(isAsleep_, asleep) != asleep && handler) {
            handler();
        }
    }

    int starts_ = 0;
    bool isAsleep_ = false; ///< as last reported
    Handlers handlers_;
};

} // namespace tarnwick::simulation
