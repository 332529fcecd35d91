// The command line of the terminal program.
#pragma once

#include "app/CommandLine/CommonOptions.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

/// A HOST argument becomes a setting, and replaces one of `--set`.
struct WatchOptions : CommonOptions {
    bool json = false;
    std::optional<double> forSeconds;

    [[nodiscard]] static const ProgramTable& table();
};

/// `arguments` without the program's name.
[[nodiscard]] std::variant<WatchOptions, UsageError> parseWatchOptions(
    const std::vector<std::string>& arguments);

} // namespace tarnwick
