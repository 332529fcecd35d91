// A network path set by the test.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/PathMonitor.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

/// Reports nothing before the test sets a path.
class FakePathMonitor final : public PathMonitor {
public:
    explicit FakePathMonitor(RunLoop& loop) : loop_(loop) {}

    void start(Update update) override {
        ++starts_;
        update_ = std::move(update);
        told_.reset();
        firstTelling_ = loop_.after(0, [this] {
            firstTelling_.reset();
            tell();
        });
    }

    /// Sets the path. The listener is told of a change before this returns.
    void report(bool satisfied, std::vector<std::string> interfaces = {}) {
        present_ = NetworkPath{satisfied, std::move(interfaces)};
        tell();
    }

    /// Repeats the present path: no monitor should, but listeners must cope.
    void repeat() const {
        if (told_) {
            update_(*told_);
        }
    }

    [[nodiscard]] int starts() const { return starts_; }

private:
    void tell() {
        if (update_ && present_ && told_ != present_) {
            told_ = present_;
            update_(*present_);
        }
    }

    RunLoop& loop_;
    int starts_ = 0;
    Update update_;
    std::optional<NetworkPath> present_;
    std::optional<NetworkPath> told_;
    RunLoop::Handle firstTelling_;
};

} // namespace tarnwick::simulation
