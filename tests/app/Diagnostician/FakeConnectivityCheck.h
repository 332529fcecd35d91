// Tells what a test says, after a while.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/ConnectivityCheck.h"

#include <utility>
#include <vector>

namespace tarnwick::simulation {

class FakeConnectivityCheck final : public ConnectivityCheck {
public:
    explicit FakeConnectivityCheck(RunLoop& loop) : loop_(loop) {}

    void ask(std::function<void(Connectivity)> answer) override {
        asked.push_back(loop_.now());
        open_.push_back(
            loop_.after(delay, [answer = std::move(answer), told = connectivity] { answer(told); }));
    }

    Connectivity connectivity = Connectivity::unknown;
    double delay = 0;
    std::vector<double> asked; ///< when

private:
    RunLoop& loop_;
    std::vector<RunLoop::Handle> open_;
};

} // namespace tarnwick::simulation
