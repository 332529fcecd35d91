// A monitor in virtual time with everything around it, as tests of its views need it.
#pragma once

#include "app/Monitor/Monitor.h"
#include "tests/simulation/FakePathMonitor.h"
#include "tests/simulation/FakeSleepMonitor.h"
#include "tests/simulation/MemoryDefaults.h"
#include "tests/simulation/RecordingNotificationCenter.h"
#include "tests/simulation/VirtualNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/TemporaryFolder.h"

namespace tarnwick {

/// Pings "1.1.1.1" every second; each ping is answered after 20 ms until told otherwise.
struct WatchedMonitor {
    test::TemporaryFolder folder;
    simulation::VirtualRunLoop loop;
    simulation::VirtualNetwork network{loop};
    simulation::FakePathMonitor path{loop};
    simulation::FakeSleepMonitor sleep;
    simulation::RecordingNotificationCenter notifications;
    simulation::MemoryDefaults defaults;
    Preferences prefs{defaults};
    std::optional<std::string> missingPermission; ///< the command that lets the user ping
    std::filesystem::path statistics = folder.path() / "stats.json";
    Monitor monitor{
        prefs,
        {.loop = loop,
         .network = network,
         .path = path,
         .sleep = sleep,
         .notifications = notifications,
         .store = {statistics},
         .missingPingPermission = [this] { return missingPermission; }}};

    void answerAfter(double seconds) {
        network.setBehavior([seconds](const auto&) { return simulation::Answer{.delay = seconds}; });
    }

    void fallSilent() {
        network.setBehavior([](const auto&) { return simulation::Answer{.copies = 0}; });
    }

    void resolve(const std::string& host, const std::string& address) {
        network.setHost(host, std::vector{simulation::VirtualNetwork::address(address)});
    }

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
