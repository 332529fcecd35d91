#include "app/Preferences/Preferences.h"

#include <chrono>
#include <cmath>

namespace tarnwick {

namespace {

using MenuBarTitle::LossMode;
using Value = UserDefaults::Value;

constexpr std::size_t showIcon = settingIndex(PreferenceKey::showIcon);
constexpr std::size_t showText = settingIndex(PreferenceKey::showText);
constexpr std::size_t lastUpdateCheck = settingIndex(PreferenceKey::lastUpdateCheckDate);
constexpr std::size_t packetLossTextMode = settingIndex(PreferenceKey::packetLossTextMode);

template<class T>
std::optional<Value> asValue(const std::optional<T>& stored) {
    return stored ? std::optional<Value>(*stored) : std::nullopt;
}

/// Nothing when no value of the setting's type is stored or registered.
std::optional<Value> storedValue(const UserDefaults& defaults, const SettingRow& row) {
    if (std::holds_alternative<bool>(row.preset)) {
        return asValue(defaults.boolean(row.key));
    }
    if (std::holds_alternative<double>(row.preset)) {
        return asValue(defaults.number(row.key));
    }
    return asValue(defaults.text(row.key));
}

/// From before there were three modes.
LossMode migratedLossMode(const UserDefaults& defaults) {
    if (const auto older = defaults.boolean(PreferenceKey::showPacketLossText)) {
        return *older ? LossMode::always : LossMode::off;
    }
    return LossMode::whenLossy;
}

Value textOf(LossMode mode) {
    return std::string(MenuBarTitle::rawValue(mode));
}

/// The defaults that the store itself gives.
const UserDefaults::Table& registeredDefaults() {
    static const UserDefaults::Table table = [] {
        UserDefaults::Table registered;
        for (const SettingRow& row : settingTable) {
            if (row.defaultFrom == SettingDefault::registered) {
                registered.emplace(row.key, defaultOf(row));
            }
        }
        return registered;
    }();
    return table;
}

} // namespace

Preferences::Preferences(UserDefaults& defaults) : defaults_(defaults) {
    defaults.registerDefaults(registeredDefaults());
    for (std::size_t index = 0; index < settingTable.size(); ++index) {
        values_.at(index).set(load(settingTable.at(index)));
    }
}

std::optional<Value> Preferences::admittedValue(const SettingRow& row) const {
    const std::optional<Value> stored = storedValue(defaults_, row);
    return stored ? admitted(row, *stored) : std::nullopt;
}

Value Preferences::load(const SettingRow& row) const {
    if (const auto value = admittedValue(row)) {
        return *value;
    }
    return row.rule == SettingRule::lossMode ? textOf(migratedLossMode(defaults_)) : defaultOf(row);
}

void Preferences::assign(const std::vector<Assignment>& assignments) {
    bool isChange = false;
    for (const auto& [index, value] : assignments) {
        isChange = values_.at(index).set(value) || isChange;
    }
    if (isChange && onChange) {
        onChange();
    }
}

void Preferences::set(const std::vector<Assignment>& assignments) {
    assign(assignments);
    for (const auto& [index, value] : assignments) {
        defaults_.set(settingTable.at(index).key, value);
    }
}

void Preferences::reload() {
    std::vector<Assignment> changes;
    for (std::size_t index = 0; index < settingTable.size(); ++index) {
        const SettingRow& row = settingTable.at(index);
        // What can't be meant leaves these as they are. The others fall back to their defaults.
        const bool needsMeaning = row.rule == SettingRule::host || row.rule == SettingRule::positiveNumber
                                  || row.rule == SettingRule::timeout;
        if (!needsMeaning) {
            changes.emplace_back(index, load(row));
        } else if (const auto value = admittedValue(row)) {
            changes.emplace_back(index, *value);
        }
    }
    assign(changes);
}

void Preferences::restoreDefaults() {
    // The registered settings first: the store sees a fixed order.
    for (const bool isRegistered : {true, false}) {
        for (const SettingRow& row : settingTable) {
            if (row.defaultFrom != SettingDefault::kept
                && (row.defaultFrom == SettingDefault::registered) == isRegistered) {
                defaults_.remove(row.key);
            }
        }
    }
    std::vector<Assignment> presets;
    for (std::size_t index = 0; index < settingTable.size(); ++index) {
        if (isRestored(settingTable.at(index))) {
            presets.emplace_back(index, load(settingTable.at(index)));
        }
    }
    set(presets);
}

Preferences::Snapshot Preferences::snapshot() const {
    Snapshot snapshot;
    for (const auto& value : values_) {
        snapshot.values.push_back(value.get());
    }
    return snapshot;
}

void Preferences::putBack(const Snapshot& snapshot) {
    std::vector<Assignment> assignments;
    for (std::size_t index = 0; index < settingTable.size(); ++index) {
        if (isRestored(settingTable.at(index))) {
            assignments.emplace_back(index, snapshot.values.at(index));
        }
    }
    set(assignments);
}

Preferences::Display Preferences::display() const {
    if (!get<bool>(showIcon)) {
        return Display::textOnly;
    }
    return get<bool>(showText) ? Display::iconAndText : Display::iconOnly;
}

LossMode Preferences::lossTextMode() const {
    return MenuBarTitle::lossMode(get<std::string>(packetLossTextMode)).value_or(LossMode::whenLossy);
}

StatusItem::Form Preferences::panelForm() const {
    return formOf(get<std::string>(settingIndex(PreferenceKey::panelFace)))
        .value_or(StatusItem::Form::automatic);
}

StatusItem::InkChoice Preferences::panelInk() const {
    return inkOf(get<std::string>(settingIndex(PreferenceKey::panelInk)))
        .value_or(StatusItem::InkChoice::automatic);
}

std::optional<RunLoop::WallTime> Preferences::lastUpdateCheckDate() const {
    const double seconds = get<double>(lastUpdateCheck);
    if (seconds <= 0) {
        return std::nullopt;
    }
    const std::chrono::duration<double> since1970(seconds);
    return RunLoop::WallTime(std::chrono::duration_cast<RunLoop::WallTime::duration>(since1970));
}

void Preferences::setHostname(const std::string& hostname) {
    set({{settingIndex(PreferenceKey::hostname), hostname}});
}

void Preferences::setSlowPingThresholdMs(double milliseconds) {
    set({{settingIndex(PreferenceKey::slowPingLowThreshold), milliseconds}});
}

void Preferences::setPingTimeout(double seconds) {
    set({{settingIndex(PreferenceKey::pingTimeout), seconds}});
}

void Preferences::setPingInterval(double seconds) {
    set({{settingIndex(PreferenceKey::pingInterval), seconds}});
}

void Preferences::setDisplay(Display display) {
    set({{showIcon, display != Display::textOnly}, {showText, display != Display::iconOnly}});
}

void Preferences::setLossTextMode(LossMode mode) {
    set({{packetLossTextMode, textOf(mode)}});
}

void Preferences::setShowNotifications(bool show) {
    set({{settingIndex(PreferenceKey::showNotifications), show}});
}

void Preferences::setKeepsHistory(bool keeps) {
    set({{settingIndex(PreferenceKey::keepHistory), keeps}});
}

void Preferences::setPanelForm(StatusItem::Form form) {
    set({{settingIndex(PreferenceKey::panelFace), std::string(rawValue(form))}});
}

void Preferences::setPanelInk(StatusItem::InkChoice ink) {
    set({{settingIndex(PreferenceKey::panelInk), std::string(rawValue(ink))}});
}

void Preferences::setAutomaticallyChecksForUpdates(bool checks) {
    set({{settingIndex(PreferenceKey::checkForUpdates), checks}});
}

void Preferences::setAutomaticallyDownloadsUpdates(bool downloads) {
    set({{settingIndex(PreferenceKey::installUpdates), downloads}});
}

void Preferences::setLastUpdateCheckDate(RunLoop::WallTime date) {
    const std::chrono::duration<double> since1970 = date.time_since_epoch();
    set({{lastUpdateCheck, std::floor(since1970.count())}});
}

void Preferences::setSkippedUpdate(const std::string& version) {
    set({{settingIndex(PreferenceKey::skippedUpdate), version}});
}

ScoringConfig Preferences::scoringConfig() const {
    return ScoringConfig::original(slowPingThresholdMs(), pingTimeout(), pingInterval());
}

} // namespace tarnwick
