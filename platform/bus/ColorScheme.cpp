#include "platform/bus/ColorScheme.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <cstdint>
#include <string>
#include <tuple>
#include <variant>

namespace tarnwick {

namespace {

constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";
constexpr const char* contrast = "contrast";

constexpr const char* panelChannel = "xfce4-panel";
constexpr const char* darkMode = "/panels/dark-mode";

using Preference = std::variant<std::monostate, std::uint32_t>;
using PanelSetting = std::variant<std::monostate, bool>;

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* panelSettingsName = "org.xfce.Xfconf";

BusConnection::Call portalCall(const char* method) {
    return {
        .destination = portalName,
        .path = "/org/freedesktop/portal/desktop",
        .interface = "org.freedesktop.portal.Settings",
        .method = method,
    };
}

BusConnection::Call panelSettingCall(const char* method) {
    return {
        .destination = panelSettingsName,
        .path = "/org/xfce/Xfconf",
        .interface = "org.xfce.Xfconf",
        .method = method,
    };
}

constexpr const char* noPreference = "org.freedesktop.portal.Error.NotFound";
constexpr const char* noPanelSetting = "org.xfce.Xfconf.Error.PropertyNotFound";

/// A new connection asks, even if that starts the service; a service that starts later is asked too. When
/// the service ends or fails to answer, its last answer still holds.
bool isReasonToAsk(const std::string& owner, NameNews news) {
    return news == NameNews::first || !owner.empty();
}

std::optional<bool> isDark(const Preference& value) {
    constexpr std::uint32_t prefersDark = 1;
    constexpr std::uint32_t prefersLight = 2;
    const auto* const preference = std::get_if<std::uint32_t>(&value);
    if (preference == nullptr || (*preference != prefersDark && *preference != prefersLight)) {
        return std::nullopt;
    }
    return *preference == prefersDark;
}

bool isHigher(const Preference& value) {
    const auto* const preference = std::get_if<std::uint32_t>(&value);
    return preference != nullptr && *preference == 1;
}

std::optional<bool> setting(const PanelSetting& value) {
    const auto* const isOn = std::get_if<bool>(&value);
    return isOn == nullptr ? std::nullopt : std::optional(*isOn);
}

} // namespace

ColorScheme::ColorScheme(BusConnection& bus) : bus_(bus) {
    watchDesktop();
    watchPanel();
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

// Every program may send such signals straight to us: only those of the service itself count.

void ColorScheme::watchDesktop() {
    subscriptions_.push_back(bus_.addMatch(
        "type='signal',sender='org.freedesktop.portal.Desktop',"
        "interface='org.freedesktop.portal.Settings',member='SettingChanged',arg0='org.freedesktop."
        "appearance'",
        [this](BusMessage& message) {
            const auto values = message.read<std::string, std::string, Preference>();
            if (!values || message.sender() != portal_) {
                return;
            }
            if (std::get<1>(*values) == colorScheme) {
                setDesktopIsDark(isDark(std::get<2>(*values)));
            } else if (std::get<1>(*values) == contrast) {
                setDesktopWantsContrast(isHigher(std::get<2>(*values)));
            }
        }));
    subscriptions_.push_back(watchName(bus_, portalName, [this](const std::string& owner, NameNews news) {
        portal_ = owner;
        if (isReasonToAsk(owner, news)) {
            askDesktop();
        }
    }));
}

void ColorScheme::askDesktop() {
    askBus<Preference>(
        bus_, portalCall("Read"), std::tuple(std::string(appearance), std::string(colorScheme)),
        lifeline_.guarded([this](const BusReply<Preference>& reply) {
            if (reply.result || reply.error == noPreference) {
                setDesktopIsDark(isDark(reply.result.value_or(Preference())));
            }
        }));
    askBus<Preference>(
        bus_, portalCall("Read"), std::tuple(std::string(appearance), std::string(contrast)),
        lifeline_.guarded([this](const BusReply<Preference>& reply) {
            if (reply.result || reply.error == noPreference) {
                setDesktopWantsContrast(isHigher(reply.result.value_or(Preference())));
            }
        }));
}

void ColorScheme::watchPanel() {
    const std::string rule = "type='signal',sender='org.xfce.Xfconf',interface='org.xfce.Xfconf',"
                             "arg0='xfce4-panel',arg1='/panels/dark-mode',member=";
    subscriptions_.push_back(bus_.addMatch(rule + "'PropertyChanged'", [this](BusMessage& message) {
        const auto values = message.read<std::string, std::string, PanelSetting>();
        if (values && message.sender() == panelSettings_) {
            setPanelIsDark(setting(std::get<2>(*values)));
        }
    }));
    subscriptions_.push_back(bus_.addMatch(rule + "'PropertyRemoved'", [this](BusMessage& message) {
        if (message.sender() == panelSettings_) {
            setPanelIsDark(std::nullopt);
        }
    }));
    subscriptions_.push_back(
        watchName(bus_, panelSettingsName, [this](const std::string& owner, NameNews news) {
            panelSettings_ = owner;
            if (isReasonToAsk(owner, news)) {
                askPanel();
            }
        }));
}

void ColorScheme::askPanel() {
    if (!followsPanel_) {
        return;
    }
    askBus<PanelSetting>(
        bus_, panelSettingCall("GetProperty"), std::tuple(std::string(panelChannel), std::string(darkMode)),
        lifeline_.guarded([this](const BusReply<PanelSetting>& reply) {
            if (reply.result || reply.error == noPanelSetting) {
                setPanelIsDark(setting(reply.result.value_or(PanelSetting())));
            }
        }));
}

void ColorScheme::setDesktopIsDark(std::optional<bool> isDark) {
    if (desktopIsDark_ != isDark) {
        desktopIsDark_ = isDark;
        listeners_.tell();
    }
}

void ColorScheme::setDesktopWantsContrast(bool wantsContrast) {
    if (desktopWantsContrast_ != wantsContrast) {
        desktopWantsContrast_ = wantsContrast;
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
