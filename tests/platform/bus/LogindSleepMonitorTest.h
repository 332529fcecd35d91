// A sleep monitor on a private bus, with logind played by a peer and the clocks by numbers.
#pragma once

#include "platform/bus/LogindSleepMonitor.h"
#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeLogind.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

class LogindSleepMonitorTest : public BusTest {
protected:
    explicit LogindSleepMonitorTest(double patience = LogindSleepMonitor::usualPatience)
        : monitor_(
              loop_, bus_,
              [this] {
                  ++clockReadings_;
                  return suspended_;
              },
              patience) {}

    void addLogind() { logind_.emplace(addPeer()); }

    /// It ends, and with it all that it knew.
    void removeLogind() {
        logind_.reset();
        peers_.clear();
    }

    void start() {
        monitor_.start({
            .willSleep =
                [this] {
                    told_.emplace_back("sleep");
                    inhibitorsWhileSaving_ = logind_ ? logind_->inhibitors() : 0;
                },
            .didWake = [this] { told_.emplace_back("wake"); },
        });
    }

    /// With logind, which sleeps would wait for.
    [[nodiscard]] bool startWithLogind() {
        addLogind();
        start();
        return runUntilInhibited();
    }

    /// And until the permission has arrived.
    [[nodiscard]] bool runUntilInhibited() {
        return runUntil([this] { return logind_->inhibitors() == 1; }) && runUntilAllHeard();
    }

    [[nodiscard]] bool runUntilTold(const std::vector<std::string>& expected) {
        return runUntil([this, &expected] { return told_ == expected; });
    }

    [[nodiscard]] bool runUntilAllHeard() { return runUntilHeardBy(logind_->peer()); }

    double suspended_ = 0;
    int clockReadings_ = 0; ///< one for each check, and for each announcement
    std::vector<std::string> told_;
    std::ptrdiff_t inhibitorsWhileSaving_ = 0;
    std::optional<FakeLogind> logind_;
    LogindSleepMonitor monitor_;
};

} // namespace tarnwick
