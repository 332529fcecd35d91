// The network path as a test tells it.
#pragma once

#include "platform/PathMonitor.h"

#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class FakePathMonitor final : public PathMonitor {
public:
    void start(Update update) override {
        ++starts_;
        update_ = std::move(update);
    }

    /// Tells the listener, if any; whether the path differs from the last one is the listener's business.
    void report(bool satisfied, std::vector<std::string> interfaces = {}) const {
        if (update_) {
            update_({satisfied, std::move(interfaces)});
        }
    }

    [[nodiscard]] int starts() const { return starts_; }

private:
    int starts_ = 0;
    Update update_;
};

} // namespace tarnwick::simulation
