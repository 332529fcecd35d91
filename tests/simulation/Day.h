// A laptop and its user around the monitor, put together as the desktop program does.
#pragma once

#include "app/Reading/LatencyChart.h"
#include "app/SettingsView/Model/SettingsModel.h"
#include "app/StatusItemController/StatusItemController.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/simulation/MonitorWorld.h"
#include "tests/simulation/RecordingStatusItem.h"
#include "tests/simulation/RecordingWindows.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick::simulation {

/// The one before the first morning.
inline constexpr RunLoop::WallTime midnight =
    std::chrono::sys_days{std::chrono::year(2030) / std::chrono::January / 15};

/// Pinged until the settings name another host. The other one is further away and has a name.
inline constexpr auto router = MonitorWorld::host;
inline constexpr auto server = "echo.example";
inline constexpr auto serverAddress = "198.51.100.7";
inline constexpr double lookupDelay = 0.125;

inline constexpr double wirelessDelay = MonitorWorld::usualDelay;
inline constexpr double cableDelay = wirelessDelay / 4;

/// Of the router.
inline constexpr StatCounter yesterday{
    .sent = 1000, .replied = 990, .lost = 10, .averageMs = 20, .fastestMs = 10, .slowestMs = 250};

/// What stands between the monitor and its user.
class FrontEnd {
public:
    explicit FrontEnd(MonitorWorld& world)
        : settings(*world.monitor, world.notifications, loginItem),
          controller({
              .loop = world.loop,
              .monitor = *world.monitor,
              .item = item,
              .menu = menu,
              .windows = windows,
              .textWidth = [this](const std::string& text) { return item.textWidth(text); },
          }),
          statusRecorder_(world.loop, [this, &world] {
              const Monitor::Status status = world.monitor->reading().status;
              if (statuses.empty() || status != statuses.back()) {
                  statuses.push_back(status);
                  since[status] = world.loop.now();
              }
          }) {}

    FakeLoginItem loginItem;
    SettingsModel settings;
    RecordingStatusItem item;
    RecordingWindows windows;
    Menu menu{StatusItemController::menuItems(false)};
    StatusItemController controller;
    std::vector<Monitor::Status> statuses;   ///< each one that there was, in order
    std::map<Monitor::Status, double> since; ///< when the latest of each began, in monotonic seconds

private:
    RenderLoop statusRecorder_;
};

/// The world, and what can be told about the day in it.
class Day : protected MonitorWorld {
protected:
    Day() {
        loop.setWallClock(midnight + std::chrono::hours(8));
        setHost(server, {serverAddress}, lookupDelay);
        EXPECT_FALSE(store().save({{router, yesterday}}));
    }

    /// Makes everything, in the desktop program's order; nothing is pinged yet.
    void launch() {
        create();
        MonitorWorld& world = *this;
        frontEnd = std::make_unique<FrontEnd>(world);
    }

    /// As at the end of the desktop program's main loop.
    void terminate() {
        monitor->saveStats();
        frontEnd.reset();
        kill();
    }

    /// Lets time pass until this time of the day.
    void until(RunLoop::WallTime::duration timeOfDay) { pass(secondsUntil(timeOfDay)); }

    [[nodiscard]] double secondsUntil(RunLoop::WallTime::duration timeOfDay) const {
        return std::chrono::duration<double>(midnight + timeOfDay - loop.wallNow()).count();
    }

    /// Lets time pass until the next ping has been sent and is not yet answered.
    void untilAPingIsOnItsWay() {
        const double next = network.sent().back().at + prefs->pingInterval();
        pass(next + cableDelay / 2 - loop.now());
    }

    // What the user sees and hears of the status item.

    [[nodiscard]] const StatusFace& face() const { return frontEnd->item.faces.back(); }

    [[nodiscard]] const std::string& toolTip() const { return frontEnd->item.toolTips.back(); }

    [[nodiscard]] const std::string& spoken() const { return frontEnd->item.accessibilityValues.back(); }

    /// How many of the chart's 36 bars have this tone.
    [[nodiscard]] std::int64_t bars(LatencyChart::BarTone tone) const {
        const LatencyChart::Chart& chart = monitor->reading().chart;
        return std::ranges::count_if(
            chart.buckets, [&](const LatencyChart::Bucket& bucket) { return chart.tone(bucket) == tone; });
    }

    // What was counted, and what it is to be compared with.

    [[nodiscard]] const StatCounter& session() const { return monitor->reading().session; }

    [[nodiscard]] const StatCounter& allTime() const { return monitor->reading().site; }

    [[nodiscard]] StatsByHost onDisk() const { return store().load(); }

    [[nodiscard]] std::int64_t pingsTo(const std::string& address) const {
        return std::ranges::count(network.sent(), address, &SentRequest::address);
    }

    [[nodiscard]] std::int64_t pingsBetween(double begin, double end) const {
        return std::ranges::count_if(
            network.sent(), [=](double at) { return begin <= at && at < end; }, &SentRequest::at);
    }

    using Notification = RecordingNotificationCenter::Notification;

    const Notification connectionDown{
        "Tarnwick — Connection down", "Your internet connection seems to be down. No replies for 8 s."};
    const Notification connectionRestored{
        "Tarnwick — Connection restored", "Your internet connection has been restored."};

    std::unique_ptr<FrontEnd> frontEnd;
    double silentFrom = 0; ///< monotonic seconds
};

} // namespace tarnwick::simulation
