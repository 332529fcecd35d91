// What a monitor needs from outside, in virtual time.
#pragma once

#include "app/Monitor/Monitor.h"
#include "tests/simulation/FakePathMonitor.h"
#include "tests/simulation/FakeSleepMonitor.h"
#include "tests/simulation/MemoryDefaults.h"
#include "tests/simulation/RecordingNotificationCenter.h"
#include "tests/simulation/VirtualNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Each ping is answered after 20 ms until told otherwise.
struct MonitorSurroundings {
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

    [[nodiscard]] MonitorEnvironment environment(
        Journal* journal = nullptr, const std::optional<DiagnosisSources>& diagnosis = std::nullopt) {
        return {
            .loop = loop,
            .network = network,
            .path = path,
            .sleep = sleep,
            .notifications = notifications,
            .store = {statistics},
            .missingPingPermission = [this] { return missingPermission; },
            .diagnosis = diagnosis,
            .journal = journal};
    }

    void answerAfter(double seconds) {
        network.setBehavior([seconds](const auto&) { return simulation::Answer{.delay = seconds}; });
    }

    void fallSilent() {
        network.setBehavior([](const auto&) { return simulation::Answer{.copies = 0}; });
    }

    void resolve(const std::string& host, const std::string& address) {
        network.setHost(host, std::vector{simulation::VirtualNetwork::address(address)});
    }
};

} // namespace tarnwick
