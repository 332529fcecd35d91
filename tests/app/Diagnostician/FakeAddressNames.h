// Names from a table, after a while.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/AddressNames.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class FakeAddressNames final : public AddressNames {
public:
    explicit FakeAddressNames(RunLoop& loop) : loop_(loop) {}

    void ask(const std::string& address, Answer answer) override {
        asked.push_back(address);
        open_.push_back(
            loop_.after(delay, [answer = std::move(answer), name = names[address]] { answer(name); }));
    }

    std::map<std::string, std::string> names; ///< by address
    double delay = 0.1;                       ///< seconds
    std::vector<std::string> asked;           ///< in their order

private:
    RunLoop& loop_;
    std::vector<RunLoop::Handle> open_;
};

} // namespace tarnwick::simulation
