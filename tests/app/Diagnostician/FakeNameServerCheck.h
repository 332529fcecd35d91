// Name servers that say what a test says, after a while.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/NameServerCheck.h"

#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class FakeNameServerCheck final : public NameServerCheck {
public:
    struct Question {
        double at;
        std::string host;
        std::int32_t family;
    };

    explicit FakeNameServerCheck(RunLoop& loop) : loop_(loop) {}

    void ask(const std::string& host, std::int32_t family, Answer answer) override {
        asked.push_back({.at = loop_.now(), .host = host, .family = family});
        open_ = loop_.after(delay, [this, answer = std::move(answer)] { answer(servers); });
    }

    std::vector<NameServerEvidence> servers{{.address = "192.0.2.53"}};
    double delay = 0;
    std::vector<Question> asked;

private:
    RunLoop& loop_;
    RunLoop::Handle open_;
};

} // namespace tarnwick::simulation
