#include "app/Preferences/SettingMistakes.h"

#include "app/Preferences/SettingTable.h"
#include "core/Text.h"
#include "core/Utf8.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <tuple>

namespace tarnwick {

namespace {

/// As much of a text as fits into a line for users.
std::string shortened(std::string_view text) {
    constexpr std::size_t longest = 40;
    std::string result;
    for (std::size_t length = 0; !text.empty(); ++length) {
        if (length == longest) {
            return result + "…";
        }
        Utf8::append(result, Utf8::takeCharacter(text));
    }
    return result;
}

bool isSameLetter(unsigned char left, unsigned char right) {
    return std::tolower(left) == std::tolower(right);
}

std::string unknownKey(const std::string& key) {
    const std::string text = "there is no setting \"" + shortened(key) + "\"";
    const auto* const meant = std::ranges::find_if(settingTable, [&key](const SettingRow& row) {
        return std::ranges::equal(std::string_view(row.key), key, isSameLetter);
    });
    return meant != settingTable.end() ? text + "; " + meant->key + " is one" : text;
}

/// What is wrong with the value, where its rule does not say it, and what the program makes of it. Empty when
/// it is taken as it is.
std::string consequence(const SettingRow& row, const std::optional<UserDefaults::Value>& value) {
    const bool hasType = value && value->index() == defaultOf(row).index();
    const auto kept = hasType ? admitted(row, *value) : std::nullopt;
    if (!kept) {
        return (value ? whyRefused(row, *value) : "") + "; ignored";
    }
    const auto* const number = std::get_if<double>(&*kept);
    return number != nullptr && *kept != *value ? "; " + Text::whole(*number) + " is used" : "";
}

/// Empty when there is none.
std::string mistakeIn(const StoredSetting& stored) {
    const auto* const row = std::ranges::find(settingTable, stored.key, &SettingRow::key);
    if (row == settingTable.end()) {
        return unknownKey(stored.key);
    }
    const std::string then = consequence(*row, stored.value);
    return then.empty() ? ""
                        : stored.key + " must be " + acceptedValues(*row) + ", not "
                              + shortened(stored.written) + then;
}

} // namespace

std::vector<std::string> settingMistakes(std::vector<StoredSetting> stored) {
    std::ranges::sort(
        stored, {}, [](const StoredSetting& setting) { return std::tie(setting.line, setting.key); });
    std::vector<std::string> mistakes;
    for (const StoredSetting& setting : stored) {
        const std::string repetition =
            setting.isRepeated ? shortened(setting.key) + " is there more than once; this one counts" : "";
        for (const std::string& mistake : {repetition, mistakeIn(setting)}) {
            if (!mistake.empty()) {
                mistakes.push_back(
                    setting.line > 0 ? "line " + std::to_string(setting.line) + ": " + mistake : mistake);
            }
        }
    }
    return mistakes;
}

} // namespace tarnwick
