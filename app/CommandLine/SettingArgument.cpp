#include "app/CommandLine/SettingArgument.h"

#include "app/Preferences/Preferences.h"
#include "core/Text.h"

#include <array>
#include <cmath>
#include <string_view>

namespace tarnwick {

namespace {

enum class SettingType { host, positiveNumber, number, boolean, lossMode, panelFace };

struct SettingRule {
    std::string_view key;
    SettingType type;
    std::string_view expected; ///< completes "KEY must be ..."
};

/// Four times what the name system allows: room for a scope and for other notations.
constexpr std::size_t longestHost = 1024;

constexpr std::string_view trueOrFalse = "true or false";

constexpr std::array settingRules{
    SettingRule{PreferenceKey::hostname, SettingType::host, "a host name or address"},
    SettingRule{PreferenceKey::pingTimeout, SettingType::positiveNumber, "a number of seconds above 0"},
    SettingRule{PreferenceKey::pingInterval, SettingType::number, "a number of seconds"},
    SettingRule{
        PreferenceKey::slowPingLowThreshold, SettingType::positiveNumber, "a number of milliseconds above 0"},
    SettingRule{PreferenceKey::showIcon, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::showText, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::showNotifications, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::packetLossTextMode, SettingType::lossMode, "off, whenLossy or always"},
    SettingRule{PreferenceKey::showPacketLossText, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::panelFace, SettingType::panelFace, "auto, label, wide or square"},
};

std::optional<double> finiteNumber(const std::string& text) {
    const std::optional<double> number = Text::parseNumber(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<UserDefaults::Value> onlyIf(bool isRight, const UserDefaults::Value& value) {
    return isRight ? std::optional(value) : std::nullopt;
}

std::optional<UserDefaults::Value> valueOf(SettingType type, const std::string& text) {
    switch (type) {
    case SettingType::host:
        return hostArgument(text);
    case SettingType::positiveNumber:
        return positiveNumber(text);
    case SettingType::number:
        return finiteNumber(text);
    case SettingType::boolean:
        return onlyIf(text == "true" || text == "false", text == "true");
    case SettingType::lossMode:
        return onlyIf(MenuBarTitle::lossMode(text).has_value(), text);
    case SettingType::panelFace:
        break;
    }
    return onlyIf(panelFace(text).has_value(), text);
}

} // namespace

std::string quoted(const std::string& text) {
    std::string result = "\"";
    result += Text::printable(text);
    result += '"';
    return result;
}

std::optional<double> positiveNumber(const std::string& text) {
    const std::optional<double> number = finiteNumber(text);
    return number && *number > 0 ? number : std::nullopt;
}

std::optional<std::string> hostArgument(const std::string& text) {
    const std::string_view host = Text::trimmed(text);
    const bool isPlausible = !host.empty() && host.size() <= longestHost;
    return isPlausible ? std::optional(std::string(host)) : std::nullopt;
}

std::variant<Setting, UsageError> parseSetting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return UsageError{"--set takes KEY=VALUE, not " + quoted(text)};
    }
    const std::string key = text.substr(0, equals);
    for (const SettingRule& rule : settingRules) {
        if (rule.key != key) {
            continue;
        }
        const std::string written = text.substr(equals + 1);
        if (auto value = valueOf(rule.type, written)) {
            return Setting(key, std::move(*value));
        }
        return UsageError{key + " must be " + std::string(rule.expected) + ", not " + quoted(written)};
    }
    return UsageError{"unknown setting " + quoted(key)};
}

} // namespace tarnwick
