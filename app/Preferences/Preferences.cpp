#include "app/Preferences/Preferences.h"

#include "core/PingIntervalSetting.h"

namespace tarnwick {

namespace {

using MenuBarTitle::LossMode;

/// All of them, the older one included.
constexpr std::array storedKeys{
    PreferenceKey::hostname,           PreferenceKey::pingTimeout,
    PreferenceKey::pingInterval,       PreferenceKey::slowPingLowThreshold,
    PreferenceKey::showIcon,           PreferenceKey::showText,
    PreferenceKey::showNotifications,  PreferenceKey::packetLossTextMode,
    PreferenceKey::showPacketLossText,
};

Preferences::Display readDisplay(const UserDefaults& defaults) {
    if (!defaults.boolean(PreferenceKey::showIcon).value_or(true)) {
        return Preferences::Display::textOnly;
    }
    return defaults.boolean(PreferenceKey::showText).value_or(true) ? Preferences::Display::iconAndText
                                                                    : Preferences::Display::iconOnly;
}

LossMode readLossTextMode(const UserDefaults& defaults) {
    const auto stored = defaults.text(PreferenceKey::packetLossTextMode);
    if (const auto mode = stored ? MenuBarTitle::lossMode(*stored) : std::nullopt) {
        return *mode;
    }
    if (const auto older = defaults.boolean(PreferenceKey::showPacketLossText)) {
        return *older ? LossMode::always : LossMode::off;
    }
    return LossMode::whenLossy;
}

StatusItem::PanelFace readPanelFace(const UserDefaults& defaults) {
    const auto stored = defaults.text(PreferenceKey::panelFace);
    return panelFace(stored.value_or("")).value_or(StatusItem::PanelFace::automatic);
}

constexpr std::array allPanelFaces{
    StatusItem::PanelFace::automatic, StatusItem::PanelFace::label, StatusItem::PanelFace::wide,
    StatusItem::PanelFace::square};

} // namespace

std::string_view rawValue(StatusItem::PanelFace face) {
    switch (face) {
    case StatusItem::PanelFace::label:
        return "label";
    case StatusItem::PanelFace::wide:
        return "wide";
    case StatusItem::PanelFace::square:
        return "square";
    case StatusItem::PanelFace::automatic:
        break;
    }
    return "auto";
}

std::optional<StatusItem::PanelFace> panelFace(std::string_view text) {
    for (const StatusItem::PanelFace face : allPanelFaces) {
        if (rawValue(face) == text) {
            return face;
        }
    }
    return std::nullopt;
}

const UserDefaults::Table& Preferences::registeredDefaults() {
    static const UserDefaults::Table table{
        {PreferenceKey::hostname, std::string("1.1.1.1")},
        {PreferenceKey::pingTimeout, 4.0},
        {PreferenceKey::pingInterval, static_cast<double>(PingIntervalSetting::defaultSeconds)},
        {PreferenceKey::slowPingLowThreshold, 100.0},
        {PreferenceKey::showIcon, true},
        {PreferenceKey::showText, true},
        {PreferenceKey::showNotifications, false},
    };
    return table;
}

Preferences::Preferences(UserDefaults& defaults) : defaults_(defaults) {
    defaults.registerDefaults(registeredDefaults());
    reload();
}

void Preferences::reload() {
    hostname_.set(defaults_.text(PreferenceKey::hostname).value_or(""));
    slowPingThresholdMs_.set(defaults_.number(PreferenceKey::slowPingLowThreshold).value_or(0));
    pingTimeout_.set(defaults_.number(PreferenceKey::pingTimeout).value_or(0));
    pingInterval_.set(
        PingIntervalSetting::clamped(defaults_.number(PreferenceKey::pingInterval).value_or(0)));
    display_.set(readDisplay(defaults_));
    lossTextMode_.set(readLossTextMode(defaults_));
    showNotifications_.set(defaults_.boolean(PreferenceKey::showNotifications).value_or(false));
    panelFace_.set(readPanelFace(defaults_));
}

void Preferences::setHostname(const std::string& hostname) {
    hostname_.set(hostname);
    defaults_.set(PreferenceKey::hostname, hostname);
}

void Preferences::setSlowPingThresholdMs(double milliseconds) {
    slowPingThresholdMs_.set(milliseconds);
    defaults_.set(PreferenceKey::slowPingLowThreshold, milliseconds);
}

void Preferences::setPingTimeout(double seconds) {
    pingTimeout_.set(seconds);
    defaults_.set(PreferenceKey::pingTimeout, seconds);
}

void Preferences::setPingInterval(double seconds) {
    pingInterval_.set(seconds);
    defaults_.set(PreferenceKey::pingInterval, seconds);
}

void Preferences::setDisplay(Display display) {
    display_.set(display);
    defaults_.set(PreferenceKey::showIcon, display != Display::textOnly);
    defaults_.set(PreferenceKey::showText, display != Display::iconOnly);
}

void Preferences::setLossTextMode(LossMode mode) {
    lossTextMode_.set(mode);
    defaults_.set(PreferenceKey::packetLossTextMode, std::string(MenuBarTitle::rawValue(mode)));
}

void Preferences::setShowNotifications(bool show) {
    showNotifications_.set(show);
    defaults_.set(PreferenceKey::showNotifications, show);
}

ScoringConfig Preferences::scoringConfig() const {
    return ScoringConfig::original(slowPingThresholdMs(), pingTimeout(), pingInterval());
}

void Preferences::restoreDefaults() {
    defaults_.edit([this] {
        for (const char* key : storedKeys) {
            defaults_.remove(key);
        }
        const Preferences fresh(defaults_);
        setHostname(fresh.hostname());
        setSlowPingThresholdMs(fresh.slowPingThresholdMs());
        setPingTimeout(fresh.pingTimeout());
        setPingInterval(fresh.pingInterval());
        setDisplay(fresh.display());
        setLossTextMode(fresh.lossTextMode());
        setShowNotifications(fresh.showNotifications());
    });
}

} // namespace tarnwick
