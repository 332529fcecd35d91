#include "app/SettingsView/Model/SettingsModel.h"

#include <utility>

namespace tarnwick {

namespace {

constexpr const SettingRow& timeoutRow = settingTable.at(settingIndex(PreferenceKey::pingTimeout));

} // namespace

SettingsModel::SettingsModel(
    Monitor& monitor, NotificationCenter& notifications, LoginItem& loginItem, SoftwareUpdates* updates)
    : monitor_(monitor), notifications_(notifications), launchAtLogin_(loginItem) {
    if (updates != nullptr) {
        updates_.emplace(*updates);
    }
    canNotify_.set(notifications.canNotify());
    notifications.onAbilityChange = lifeline_.guarded([this] { canNotify_.set(notifications_.canNotify()); });
}

void SettingsModel::refresh() {
    launchAtLogin_.refresh();
    if (values().showNotifications()) {
        notifications_.requestAuthorization();
    }
}

std::string SettingsModel::presentAddressLine() const {
    const Reading& reading = monitor_.reading();
    if (reading.resolvedAddress) {
        return *reading.resolvedAddress;
    }
    if (reading.isDown() && reading.startError) {
        return reading.downReasonText;
    }
    if (reading.isPaused()) {
        return reading.qualityTitle;
    }
    return "Resolving…";
}

std::vector<HostPreset> SettingsModel::hostPresets() const {
    return tarnwick::hostPresets(networkServers ? networkServers() : NetworkServers{});
}

bool SettingsModel::admitsPingTimeout(double seconds) {
    return admitted(timeoutRow, seconds).has_value();
}

std::string SettingsModel::pingTimeoutRule() {
    return "Must be " + std::string(timeoutRange.text) + " seconds.";
}

void SettingsModel::setPingInterval(int seconds) {
    if (seconds != values().pingInterval()) {
        monitor_.prefs().setPingInterval(seconds);
    }
}

void SettingsModel::restoreDefaults() {
    withoutTracking([this] { beforeRestoring_ = values().snapshot(); });
    monitor_.restoreDefaults();
}

void SettingsModel::undoRestoring() {
    if (const auto before = std::exchange(beforeRestoring_, std::nullopt)) {
        monitor_.prefs().putBack(*before);
    }
}

void SettingsModel::testNotification() {
    notifications_.post(
        "Tarnwick — Test", "This is how Tarnwick tells you that the connection is down or back.");
}

void SettingsModel::setShowNotifications(bool show) {
    monitor_.prefs().setShowNotifications(show);
    if (show) {
        notifications_.requestAuthorization();
    }
}

} // namespace tarnwick
