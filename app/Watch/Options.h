// The command line of the terminal program.
#pragma once

#include "platform/UserDefaults.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

struct WatchOptions {
    bool json = false;
    bool help = false;
    bool version = false;
    std::optional<double> forSeconds;
    /// For this run only, in the order given; a HOST argument comes last.
    std::vector<std::pair<std::string, UserDefaults::Value>> settings;

    [[nodiscard]] static const char* usage();
};

/// What is wrong with the command line, in one line.
struct UsageError {
    std::string text;
};

/// `arguments` without the program's name. Nothing but the result changes.
[[nodiscard]] std::variant<WatchOptions, UsageError> parseWatchOptions(
    const std::vector<std::string>& arguments);

/// One "KEY=VALUE" of the command line, its value in the type of that key.
[[nodiscard]] std::variant<std::pair<std::string, UserDefaults::Value>, UsageError> parseSetting(
    const std::string& text);

} // namespace tarnwick
