// A monitor in virtual time with everything around it, as tests of its views need it.
#pragma once

#include "tests/app/MonitorSurroundings.h"

namespace tarnwick {

/// Pings "1.1.1.1" every second.
struct WatchedMonitor : MonitorSurroundings {
    Monitor monitor{prefs, environment()};

    /// Starts the monitor and lets `seconds` pass.
    void watchFor(double seconds) {
        monitor.start();
        loop.advance(seconds);
    }

    /// Lets time pass until the connection counts as down; false when that takes more than ten minutes.
    [[nodiscard]] bool waitUntilDown() {
        for (int second = 0; second < 600 && monitor.reading().status != Monitor::Status::down; ++second) {
            loop.advance(1);
        }
        return monitor.reading().status == Monitor::Status::down;
    }
};

} // namespace tarnwick
