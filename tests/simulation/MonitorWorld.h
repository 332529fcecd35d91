// A monitor whose time, network, sleep, path and settings the test decides.
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
#include <memory>
#include <string>
#include <vector>

namespace tarnwick::simulation {

/// One process. Two of them may share a folder, and so the statistics.
class MonitorWorld {
public:
    /// The host in the settings, an address: it needs no script to be found.
    static constexpr auto host = "192.0.2.1";
    /// The delay of an answer until a test says otherwise; exact in binary, as are its sums with whole
    /// seconds.
    static constexpr double usualDelay = 0.03125;

    MonitorWorld() : MonitorWorld(std::make_shared<test::TemporaryFolder>()) {}

    explicit MonitorWorld(std::shared_ptr<test::TemporaryFolder> sharedFolder);

    /// Reads the settings and makes a monitor without starting it.
    void create();
    /// Makes and starts a monitor and runs what is due: the first ping has been sent then.
    void start();
    /// Saves the statistics, then destroys the monitor.
    void end();
    /// Destroys the monitor without saving, as a kill does.
    void kill();

    void pass(double seconds) { loop.advance(seconds); }

    /// Lets time pass until `sinceStart` seconds after the start.
    void passUntil(double sinceStart) { loop.advance(startedAt + sinceStart - loop.now()); }

    /// Every address answers after `delay` seconds.
    void answerAfter(double delay);
    void fallSilent();
    /// `name` has these addresses from now on.
    void setHost(const std::string& name, const std::vector<std::string>& addresses, double delay = 0);
    /// `name` can't be resolved from now on.
    void setUnknownHost(const std::string& name, const std::string& reason = "Name or service not known");
    /// An answer to the ping with this id arrives, whatever sockets are open.
    void deliverReply(std::uint64_t id);

    /// Seconds after the start at which requests went out.
    [[nodiscard]] std::vector<double> sendTimes() const;
    /// How often pinging has been (re)started for the monitor's host.
    [[nodiscard]] int restarts() const;

    [[nodiscard]] std::filesystem::path statsFile() const {
        return folder->path() / "Tarnwick" / "stats.json";
    }

    [[nodiscard]] StatsStore store() const { return {statsFile()}; }

    std::shared_ptr<test::TemporaryFolder> folder;
    VirtualRunLoop loop;
    VirtualNetwork network{loop};
    FakePathMonitor path{loop};
    FakeSleepMonitor sleep;
    RecordingNotificationCenter notifications;
    MemoryDefaults defaults;
    std::unique_ptr<Preferences> prefs;
    std::unique_ptr<Monitor> monitor;
    double startedAt = 0;
};

} // namespace tarnwick::simulation
