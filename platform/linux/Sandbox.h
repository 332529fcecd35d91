// Whether the program is shut in, with the desktop's services behind a portal.
#pragma once

#include "platform/linux/RunningProgram.h"

#include <filesystem>
#include <optional>

namespace tarnwick {

/// Of Flatpak, which leaves a file below `root`, or of Snap, which sets a variable to the folder that
/// `program`, the one that runs, lies in. What a snapped program starts has the variable too, wherever it
/// lies.
[[nodiscard]] bool isSandboxed(
    const std::filesystem::path& root = "/",
    const std::optional<std::filesystem::path>& program = runningProgram());

} // namespace tarnwick
