#include "platform/bus/ColorScheme.h"

#include "platform/bus/BusCall.h"

#include <cstdint>
#include <string>
#include <tuple>

namespace tarnwick {

namespace {

constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";

constexpr const char* panelChannel = "xfce4-panel";
constexpr const char* darkMode = "/panels/dark-mode";

BusConnection::Call portalCall(const char* method) {
    return {
        .destination = "org.freedesktop.portal.Desktop",
        .path = "/org/freedesktop/portal/desktop",
        .interface = "org.freedesktop.portal.Settings",
        .method = method,
    };
}

BusConnection::Call panelSettingCall(const char* method) {
    return {
        .destination = "org.xfce.Xfconf",
        .path = "/org/xfce/Xfconf",
        .interface = "org.xfce.Xfconf",
        .method = method,
    };
}

std::string ownerMatch(const std::string& name) {
    return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
           "member='NameOwnerChanged',arg0='"
           + name + "'";
}

/// A service that has come is asked again; one that has gone may have taken its answer with it, or not: what
/// it said last still holds.
bool hasCome(sdbus::Message& message) {
    const auto values = valuesOf<std::string, std::string, std::string>(message);
    return values && !std::get<2>(*values).empty();
}

std::optional<bool> isDark(sdbus::Variant value) {
    // Reading a setting wraps its value once more than telling of its change does.
    while (const auto inner = valueOf<sdbus::Variant>(value)) {
        value = *inner;
    }
    constexpr std::uint32_t prefersDark = 1;
    constexpr std::uint32_t prefersLight = 2;
    const auto preference = valueOf<std::uint32_t>(value);
    if (preference == prefersDark) {
        return true;
    }
    return preference == prefersLight ? std::optional(false) : std::nullopt;
}

} // namespace

ColorScheme::ColorScheme(BusConnection& bus) : bus_(bus) {
    stateSubscription_ = bus_.onStateChange([this](BusConnection::State) { busChanged(); });
    desktopMatch_ = bus_.addMatch(
        "type='signal',sender='org.freedesktop.portal.Desktop',"
        "interface='org.freedesktop.portal.Settings',member='SettingChanged',arg0='org.freedesktop."
        "appearance'",
        [this](sdbus::Message& message) {
            const auto values = valuesOf<std::string, std::string, sdbus::Variant>(message);
            if (values && std::get<1>(*values) == colorScheme) {
                setDesktopIsDark(isDark(std::get<2>(*values)));
            }
        });
    portalMatch_ = bus_.addMatch(ownerMatch(portalCall("").destination), [this](sdbus::Message& message) {
        if (hasCome(message)) {
            askDesktop();
        }
    });
    matchPanelSetting();
    busChanged();
}

void ColorScheme::setFollowsPanel(bool follows) {
    if (followsPanel_ == follows) {
        return;
    }
    followsPanel_ = follows;
    if (follows) {
        askPanel();
    } else {
        setPanelIsDark(std::nullopt);
    }
}

void ColorScheme::busChanged() {
    if (bus_.state() != BusConnection::State::connected) {
        return;
    }
    askDesktop();
    askPanel();
}

void ColorScheme::askDesktop() {
    callBus<sdbus::Variant>(
        bus_, portalCall("Read"), std::tuple(std::string(appearance), std::string(colorScheme)),
        lifeline_.guarded([this](const std::optional<sdbus::Variant>& reply) {
            setDesktopIsDark(reply ? isDark(*reply) : std::nullopt);
        }));
}

void ColorScheme::matchPanelSetting() {
    const std::string rule = "type='signal',sender='org.xfce.Xfconf',interface='org.xfce.Xfconf',"
                             "arg0='xfce4-panel',arg1='/panels/dark-mode',member=";
    panelMatches_ = {
        bus_.addMatch(
            rule + "'PropertyChanged'",
            [this](sdbus::Message& message) {
                const auto values = valuesOf<std::string, std::string, sdbus::Variant>(message);
                setPanelIsDark(values ? valueOf<bool>(std::get<2>(*values)) : std::nullopt);
            }),
        bus_.addMatch(rule + "'PropertyRemoved'", [this](sdbus::Message&) { setPanelIsDark(std::nullopt); }),
        bus_.addMatch(
            ownerMatch(panelSettingCall("").destination),
            [this](sdbus::Message& message) {
                if (hasCome(message)) {
                    askPanel();
                }
            }),
    };
}

void ColorScheme::askPanel() {
    if (!followsPanel_ || bus_.state() != BusConnection::State::connected) {
        return;
    }
    callBus<sdbus::Variant>(
        bus_, panelSettingCall("GetProperty"), std::tuple(std::string(panelChannel), std::string(darkMode)),
        lifeline_.guarded([this](const std::optional<sdbus::Variant>& reply) {
            setPanelIsDark(reply ? valueOf<bool>(*reply) : std::nullopt);
        }));
}

void ColorScheme::setDesktopIsDark(std::optional<bool> isDark) {
    if (desktopIsDark_ != isDark) {
        desktopIsDark_ = isDark;
        listeners_.tell();
    }
}

void ColorScheme::setPanelIsDark(std::optional<bool> isDark) {
    if (!followsPanel_) {
        isDark.reset();
    }
    if (panelIsDark_ != isDark) {
        panelIsDark_ = isDark;
        listeners_.tell();
    }
}

} // namespace tarnwick
