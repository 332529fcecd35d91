// Whether the program runs inside a sandbox, with the desktop's services behind a portal.
#pragma once

#include "platform/linux/RunningProgram.h"

#include <filesystem>
#include <optional>

namespace tarnwick {

/// Flatpak puts a file below `root`. Snap sets a variable to the folder that holds `program`, the running
/// program. A program outside of that folder has only inherited the variable from a snap that started it.
[[nodiscard]] bool isSandboxed(
    const std::filesystem::path& root = "/",
    const std::optional<std::filesystem::path>& program = runningProgram());

} // namespace tarnwick
