// Settings and other values on the command lines of both programs.
#pragma once

#include "platform/ports/UserDefaults.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tarnwick {

/// What is wrong with a command line, in one line.
struct UsageError {
    std::string text;
};

using Setting = std::pair<std::string, UserDefaults::Value>;

/// One "KEY=VALUE"; the value has the key's type.
[[nodiscard]] std::variant<Setting, UsageError> parseSetting(const std::string& text);

/// The part of a usage text that lists all settings.
[[nodiscard]] std::string settingsUsage();

/// Nothing when the text is no such number.
[[nodiscard]] std::optional<double> positiveNumber(const std::string& text);

/// For error messages: in quotation marks, on one line.
[[nodiscard]] std::string quoted(const std::string& text);

} // namespace tarnwick
