// What completes a program's command line in a shell, made from the program's table.
#pragma once

#include "app/CommandLine/ProgramTable.h"

#include <string>

namespace tarnwick {

/// Whether a shell may offer the hosts that it knows.
[[nodiscard]] inline bool takesHost(const ProgramOption& option) {
    return option.argument != nullptr && ProgramOption::hostArgument == option.argument;
}

/// A file for bash's completions folder. Needs no library of functions.
[[nodiscard]] std::string bashCompletion(const ProgramTable& program);

/// A file for zsh's functions folder.
[[nodiscard]] std::string zshCompletion(const ProgramTable& program);

/// A file for fish's completions folder.
[[nodiscard]] std::string fishCompletion(const ProgramTable& program);

} // namespace tarnwick
