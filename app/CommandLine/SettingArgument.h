// Settings and other values as they are written on the command lines of the programs.
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

/// One "KEY=VALUE", its value in the type of that key.
[[nodiscard]] std::variant<Setting, UsageError> parseSetting(const std::string& text);

/// Nothing when it is not what its name says.
[[nodiscard]] std::optional<double> positiveNumber(const std::string& text);
[[nodiscard]] std::optional<std::string> hostArgument(const std::string& text);

/// For complaints: in quotation marks, on one line.
[[nodiscard]] std::string quoted(const std::string& text);

} // namespace tarnwick
