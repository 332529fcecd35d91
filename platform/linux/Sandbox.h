// Whether the program is shut in, with the desktop's services behind a portal.
#pragma once

#include <filesystem>

namespace tarnwick {

/// Of Flatpak, which leaves a file below `root`, or of Snap, which sets a variable.
[[nodiscard]] bool isSandboxed(const std::filesystem::path& root = "/");

} // namespace tarnwick
