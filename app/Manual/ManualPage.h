// The parts of a manual page that a program's table knows, in scdoc's markup.
#pragma once

#include "app/CommandLine/ProgramTable.h"

#include <string>
#include <string_view>

namespace tarnwick {

/// `page` with its marks filled in: @PURPOSE@ within a line, and @SYNOPSIS@, @OPTIONS@ and @SETTINGS@, each
/// on a line of its own.
[[nodiscard]] std::string manualPage(const ProgramTable& program, std::string_view page);

} // namespace tarnwick
