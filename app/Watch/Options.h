// The command line of the terminal program.
#pragma once

#include "app/CommandLine/SettingArgument.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

struct WatchOptions {
    bool json = false;
    bool help = false;
    bool version = false;
    std::optional<double> forSeconds;
    /// For this run only, in the order given; a HOST argument comes last.
    std::vector<Setting> settings;

    [[nodiscard]] static const char* usage();
};

/// `arguments` without the program's name. Nothing but the result changes.
[[nodiscard]] std::variant<WatchOptions, UsageError> parseWatchOptions(
    const std::vector<std::string>& arguments);

} // namespace tarnwick
