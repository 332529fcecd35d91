// What the settings window shows and changes, without a toolkit.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/SettingsView/Model/HostPresets.h"
#include "app/SettingsView/Model/LaunchAtLoginToggle.h"
#include "app/SettingsView/Model/UpdateSettings.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Observable through the monitor and its preferences. Main thread.
class SettingsModel {
public:
    /// All of them outlive the model. Without updates there are no update settings.
    SettingsModel(
        Monitor& monitor, NotificationCenter& notifications, LoginItem& loginItem,
        SoftwareUpdates* updates = nullptr);

    [[nodiscard]] const Preferences& values() const { return monitor_.prefs(); }

    /// The host's address, that it is being resolved, or why it can't be or is not.
    [[nodiscard]] const std::string& addressLine() const { return addressLine_.get(); }

    /// What the user should know or do.
    [[nodiscard]] const Notices& notices() const { return notices_.get(); }

    /// Asks an administrator to let this user ping; null where nothing can ask. Set by the owner.
    std::function<void()> allowPinging;
    /// Answers the offer of an extension; null where nothing takes the answer. Set by the owner.
    std::function<void(bool switchOn)> answerOffer;
    /// Answers the offer of a place among the applications. Null for an installed program. Set by the owner.
    std::function<void(bool addsIt)> answerApplications;
    /// Asks whether to take the program out of there again. Likewise.
    std::function<void()> uninstall;
    /// Starts a newer version; null where nothing can. Set by the owner.
    std::function<void()> restart;

    /// Asks whether to clear the history; null where nothing can. Set by the owner.
    std::function<void()> clearHistory;
    /// Where the history lies, for people. Set by the owner before a window is made.
    std::string historyFile;

    /// Reads what machines the network has; null where nothing can. Set by the owner.
    std::function<NetworkServers()> networkServers;

    /// Hosts to choose from, as the network is now.
    [[nodiscard]] std::vector<HostPreset> hostPresets() const;

    /// A blank text is ignored.
    void commitHost(const std::string& text) { monitor_.setHostname(text); }

    /// An unchanged interval is ignored.
    void setPingInterval(int seconds);

    [[nodiscard]] static bool admitsPingTimeout(double seconds);
    /// For users, about a time-out that is not admitted.
    [[nodiscard]] static std::string pingTimeoutRule();

    void setPingTimeout(double seconds) { monitor_.prefs().setPingTimeout(seconds); }

    void setPanelForm(StatusItem::Form form) { monitor_.prefs().setPanelForm(form); }

    void setSlowPingThresholdMs(double ms) { monitor_.prefs().setSlowPingThresholdMs(ms); }

    /// Everything set so far survives a power cut from now on. May wait for the disk.
    void flush() { monitor_.prefs().flush(); }

    void setDisplay(Preferences::Display display) { monitor_.prefs().setDisplay(display); }

    void setPanelInk(StatusItem::InkChoice ink) { monitor_.prefs().setPanelInk(ink); }

    void setKeepsHistory(bool keeps) { monitor_.prefs().setKeepsHistory(keeps); }

    /// What became of the latest clearing, for the user; empty when it went well.
    [[nodiscard]] const std::string& historyProblem() const { return historyProblem_.get(); }

    void setHistoryProblem(const std::string& problem) { historyProblem_.set(problem); }

    void setLossTextMode(MenuBarTitle::LossMode mode) { monitor_.prefs().setLossTextMode(mode); }

    /// Switching alerts on also asks whether notifications can be shown.
    void setShowNotifications(bool show);

    void restoreDefaults();

    /// Whether settings of before the latest restoring are kept.
    [[nodiscard]] bool canUndoRestoring() const { return beforeRestoring_.has_value(); }

    /// Puts these back, and keeps them no longer.
    void undoRestoring();

    void forgetRestoring() { beforeRestoring_.reset(); }

    [[nodiscard]] LaunchAtLoginToggle& launchAtLogin() { return launchAtLogin_; }

    /// Null where the program does not replace itself.
    [[nodiscard]] UpdateSettings* updates() { return updates_ ? &*updates_ : nullptr; }

    /// Whether notifications can be shown; `unknown` until the user wants some.
    [[nodiscard]] NotificationCenter::Ability canNotify() const { return canNotify_.get(); }

    /// Whether the place where the item is shown has room for more text than the latency's figure.
    [[nodiscard]] bool hasRoomForText() const { return hasRoomForText_.get(); }

    void setRoomForText(bool hasRoom) { hasRoomForText_.set(hasRoom); }

    /// The place of a program that was unpacked and not installed.
    struct Applications {
        bool haveIt;         ///< the program
        std::string problem; ///< of the latest change, for the user; empty: none

        friend bool operator==(const Applications&, const Applications&) = default;
    };

    /// Nothing for an installed program.
    [[nodiscard]] const std::optional<Applications>& applications() const { return applications_.get(); }

    void setApplications(const Applications& applications) { applications_.set(applications); }

    /// Posts one, whether or not alerts are on.
    void testNotification();

    /// Reads the login item again: its changes are not observable.
    /// While alerts are on, asks again whether they can be shown.
    void refresh();

private:
    [[nodiscard]] std::string presentAddressLine() const;

    Monitor& monitor_;
    NotificationCenter& notifications_;
    LaunchAtLoginToggle launchAtLogin_;
    std::optional<Preferences::Snapshot> beforeRestoring_;
    std::optional<UpdateSettings> updates_;
    /// The reading changes at each ping, this line rarely.
    Derived<std::string> addressLine_{[this] { return presentAddressLine(); }};
    Derived<Notices> notices_{[this] { return monitor_.reading().notices; }};
    Observed<NotificationCenter::Ability> canNotify_;
    Observed<bool> hasRoomForText_{true};
    Observed<std::optional<Applications>> applications_;
    Observed<std::string> historyProblem_;
    Lifeline lifeline_;
};

} // namespace tarnwick
