#include "app/Preferences/SettingTable.h"

#include "core/HostText.h"
#include "core/MenuBarTitle.h"
#include "core/Text.h"

#include <cmath>
#include <utility>

namespace tarnwick {

namespace {

using Value = UserDefaults::Value;

/// In seconds since 1970; the clock's own nanoseconds end some years later.
constexpr double latestDate = 9e9;

constexpr std::array allInks{
    StatusItem::InkChoice::automatic, StatusItem::InkChoice::light, StatusItem::InkChoice::dark};

template<class Choices>
std::vector<std::string_view> textsOf(const Choices& choices) {
    std::vector<std::string_view> texts;
    texts.reserve(choices.size());
    for (const auto choice : choices) {
        texts.push_back(rawValue(choice));
    }
    return texts;
}

std::optional<Value> onlyIf(bool isRight, const Value& value) {
    return isRight ? std::optional(value) : std::nullopt;
}

std::optional<Value> hostOf(const std::string& text) {
    auto found = hostIn(text);
    auto* const host = std::get_if<std::string>(&found);
    return host != nullptr ? std::optional<Value>(std::move(*host)) : std::nullopt;
}

} // namespace

Value defaultOf(const SettingRow& row) {
    if (const auto* text = std::get_if<std::string_view>(&row.preset)) {
        return std::string(*text);
    }
    if (const auto* number = std::get_if<double>(&row.preset)) {
        return *number;
    }
    return std::get<bool>(row.preset);
}

std::optional<Value> admitted(const SettingRow& row, const Value& value) {
    switch (row.rule) {
    case SettingRule::host:
        return hostOf(std::get<std::string>(value));
    case SettingRule::positiveNumber:
        return onlyIf(std::get<double>(value) > 0, value);
    case SettingRule::timeout:
        return onlyIf(
            std::get<double>(value) >= timeoutRange.lowest && std::get<double>(value) <= timeoutRange.highest,
            value);
    case SettingRule::pingInterval:
        return static_cast<double>(PingIntervalSetting::clamped(std::get<double>(value)));
    case SettingRule::lossMode:
        return onlyIf(MenuBarTitle::lossMode(std::get<std::string>(value)).has_value(), value);
    case SettingRule::form:
        return onlyIf(formOf(std::get<std::string>(value)).has_value(), value);
    case SettingRule::ink:
        return onlyIf(inkOf(std::get<std::string>(value)).has_value(), value);
    case SettingRule::date:
        return onlyIf(std::get<double>(value) >= 0 && std::get<double>(value) <= latestDate, value);
    case SettingRule::boolean:
    case SettingRule::anyText:
        break;
    }
    return value;
}

std::string whyRefused(const SettingRow& row, const Value& value) {
    const auto* const text = std::get_if<std::string>(&value);
    if (row.rule != SettingRule::host || text == nullptr) {
        return "";
    }
    const auto found = hostIn(*text);
    const auto* const mistake = std::get_if<HostMistake>(&found);
    return mistake != nullptr ? ": " + std::string(reason(*mistake)) : "";
}

std::optional<Value> parsedSetting(const SettingRow& row, const std::string& text) {
    if (std::holds_alternative<std::string_view>(row.preset)) {
        return admitted(row, text);
    }
    if (std::holds_alternative<double>(row.preset)) {
        const std::optional<double> number = numberIn(text);
        const std::optional<Value> kept = number ? admitted(row, *number) : std::nullopt;
        return kept && *kept == Value(*number) ? kept : std::nullopt;
    }
    return onlyIf(text == "true" || text == "false", text == "true");
}

std::string defaultText(const SettingRow& row) {
    if (const auto* text = std::get_if<std::string_view>(&row.preset)) {
        return std::string(*text);
    }
    if (const auto* number = std::get_if<double>(&row.preset)) {
        return Text::whole(*number);
    }
    return std::get<bool>(row.preset) ? "true" : "false";
}

std::vector<std::string_view> choicesOf(const SettingRow& row) {
    switch (row.rule) {
    case SettingRule::boolean:
        return {"true", "false"};
    case SettingRule::lossMode:
        return textsOf(MenuBarTitle::allLossModes);
    case SettingRule::form:
        return textsOf(allForms);
    case SettingRule::ink:
        return textsOf(allInks);
    case SettingRule::host:
    case SettingRule::positiveNumber:
    case SettingRule::timeout:
    case SettingRule::pingInterval:
    case SettingRule::date:
    case SettingRule::anyText:
        break;
    }
    return {};
}

std::string acceptedValues(const SettingRow& row) {
    std::string text(row.values);
    if (row.rule == SettingRule::timeout) {
        text += ", ";
        text += timeoutRange.text;
    }
    return text;
}

std::string description(const SettingRow& row) {
    std::string text(row.meaning);
    if (row.rule != SettingRule::boolean) {
        text += ": ";
        text += acceptedValues(row);
    }
    return text;
}

std::optional<double> numberIn(std::string_view text) {
    const std::optional<double> number = Text::parseNumber(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::string_view rawValue(StatusItem::Form form) {
    switch (form) {
    case StatusItem::Form::label:
        return "label";
    case StatusItem::Form::wide:
        return "wide";
    case StatusItem::Form::square:
        return "square";
    case StatusItem::Form::automatic:
        break;
    }
    return "auto";
}

std::optional<StatusItem::Form> formOf(std::string_view text) {
    for (const StatusItem::Form form : allForms) {
        if (rawValue(form) == text) {
            return form;
        }
    }
    return std::nullopt;
}

std::string_view rawValue(StatusItem::InkChoice ink) {
    switch (ink) {
    case StatusItem::InkChoice::light:
        return "light";
    case StatusItem::InkChoice::dark:
        return "dark";
    case StatusItem::InkChoice::automatic:
        break;
    }
    return "auto";
}

std::optional<StatusItem::InkChoice> inkOf(std::string_view text) {
    for (const StatusItem::InkChoice ink : allInks) {
        if (rawValue(ink) == text) {
            return ink;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
