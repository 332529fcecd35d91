#include "app/CommandLine/SettingArgument.h"

#include "app/Preferences/SettingTable.h"
#include "core/Text.h"

#include <algorithm>

namespace tarnwick {

namespace {

constexpr std::size_t settingColumn = 32; ///< where the descriptions begin

} // namespace

std::string quoted(const std::string& text) {
    std::string result = "\"";
    result += Text::printable(text);
    result += '"';
    return result;
}

std::optional<double> positiveNumber(const std::string& text) {
    const std::optional<double> number = numberIn(text);
    return number && *number > 0 ? number : std::nullopt;
}

std::variant<Setting, UsageError> parseSetting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return UsageError{"--set takes KEY=VALUE, not " + quoted(text)};
    }
    const std::string key = text.substr(0, equals);
    const auto* const row = std::ranges::find(settingTable, key, &SettingRow::key);
    if (row == settingTable.end()) {
        return UsageError{"unknown setting " + quoted(key)};
    }
    const std::string written = text.substr(equals + 1);
    const auto value = parsedSetting(*row, written);
    if (!value) {
        return UsageError{
            key + " must be " + acceptedValues(*row) + ", not " + quoted(written)
            + whyRefused(*row, written)};
    }
    return Setting(key, *value);
}

std::string settingsUsage() {
    std::string usage = "Settings and their defaults:\n";
    for (const SettingRow& row : settingTable) {
        if (!isForUsers(row)) {
            continue;
        }
        std::string line = std::string("  ") + row.key + "=" + defaultText(row);
        line.resize(std::max(line.size() + 2, settingColumn), ' ');
        usage += line + description(row) + "\n";
    }
    return usage;
}

} // namespace tarnwick
