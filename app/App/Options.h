// The command line of the desktop program.
#pragma once

#include "app/CommandLine/SettingArgument.h"

#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

struct AppOptions {
    bool help = false;
    bool version = false;
    std::vector<Setting> settings; ///< for this run only, in the order given

    [[nodiscard]] static const char* usage();
};

/// `arguments` without the program's name.
[[nodiscard]] std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments);

} // namespace tarnwick
