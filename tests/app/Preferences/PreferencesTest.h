// Settings in a store in memory.
#pragma once

#include "app/Preferences/Preferences.h"
#include "tests/simulation/MemoryDefaults.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>

namespace tarnwick::test {

inline UserDefaults::Value text(const std::string& value) {
    return value;
}

/// The settings as their readers see them.
struct Settings {
    std::string hostname = "1.1.1.1";
    double slowPingThresholdMs = 100;
    double pingTimeout = 4;
    double pingInterval = 1;
    Preferences::Display display = Preferences::Display::iconAndText;
    MenuBarTitle::LossMode lossTextMode = MenuBarTitle::LossMode::whenLossy;
    bool showNotifications = false;
    bool keepsHistory = true;
    StatusItem::Form panelForm = StatusItem::Form::automatic;
    StatusItem::InkChoice panelInk = StatusItem::InkChoice::automatic;
    bool checksForUpdates = true;
    bool downloadsUpdates = false;
    std::optional<RunLoop::WallTime> lastUpdateCheck = std::nullopt;
    std::string skippedUpdate = "";

    friend bool operator==(const Settings&, const Settings&) = default;
};

inline Settings all(const Preferences& prefs) {
    return {
        prefs.hostname(),
        prefs.slowPingThresholdMs(),
        prefs.pingTimeout(),
        prefs.pingInterval(),
        prefs.display(),
        prefs.lossTextMode(),
        prefs.showNotifications(),
        prefs.keepsHistory(),
        prefs.panelForm(),
        prefs.panelInk(),
        prefs.automaticallyChecksForUpdates(),
        prefs.automaticallyDownloadsUpdates(),
        prefs.lastUpdateCheckDate(),
        prefs.skippedUpdate()};
}

/// Of the wall clock.
inline RunLoop::WallTime secondsSince1970(int seconds) {
    return RunLoop::WallTime(std::chrono::seconds(seconds));
}

class PreferencesTest : public testing::Test {
protected:
    void put(const UserDefaults::Table& stored) {
        for (const auto& [key, value] : stored) {
            defaults_.put(key, value);
        }
    }

    simulation::MemoryDefaults defaults_;
};

} // namespace tarnwick::test
