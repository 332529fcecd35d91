// What the settings window shows and changes, without its controls.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/SettingsView/Model/LaunchAtLoginToggle.h"
#include "app/SettingsView/Model/UpdateSettings.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Observable through the monitor and its preferences. Main thread.
class SettingsModel {
public:
    /// All of them outlive the model. Without a framework there is nothing about updates to be set.
    SettingsModel(Monitor& monitor, LoginItem& loginItem, UpdateFramework* updates = nullptr);

    [[nodiscard]] const Preferences& values() const { return monitor_.prefs(); }

    /// Beside the host: its address when that says more, what it waits for, or why there is none.
    [[nodiscard]] std::optional<std::string> addressLine() const;

    /// What was typed, as a whole. Without a host in it the present one stays.
    void commitHost(const std::string& text) { monitor_.setHostname(text); }

    /// An unchanged interval is ignored.
    void setPingInterval(int seconds);

    void setSlowPingThresholdMs(double ms) { monitor_.prefs().setSlowPingThresholdMs(ms); }

    void setDisplay(Preferences::Display display) { monitor_.prefs().setDisplay(display); }

    void setLossTextMode(MenuBarTitle::LossMode mode) { monitor_.prefs().setLossTextMode(mode); }

    void setShowNotifications(bool show);

    void restoreDefaults() { monitor_.restoreDefaults(); }

    [[nodiscard]] LaunchAtLoginToggle& launchAtLogin() { return launchAtLogin_; }

    /// Null where there is nothing to be set about updates.
    [[nodiscard]] UpdateSettings* updates() { return updates_ ? &*updates_ : nullptr; }

    /// Reads afresh what changes elsewhere without telling: for a form that appears.
    void refresh();

    /// Called after alerts have been turned on: somebody may have to be asked first.
    std::function<void()> onAlertsTurnedOn;

private:
    Monitor& monitor_;
    LaunchAtLoginToggle launchAtLogin_;
    std::optional<UpdateSettings> updates_;
};

} // namespace tarnwick
