// The command line of the desktop program.
#pragma once

#include "app/CommandLine/CommonOptions.h"

#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

struct AppOptions : CommonOptions {
    [[nodiscard]] static std::string usage();
};

/// `arguments` without the program's name.
[[nodiscard]] std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments);

} // namespace tarnwick
