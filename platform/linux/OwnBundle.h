// The folder that a program is part of, if it was unpacked as a bundle and not installed.
#pragma once

#include "platform/linux/RunningProgram.h"

#include <filesystem>
#include <optional>

namespace tarnwick {

/// The nearest folder above the program whose name has the extension "app", if the program is `bin/NAME` in
/// it. Nothing for a program that is not in such a folder, or whose path is unknown. Only looks at the path.
[[nodiscard]] std::optional<std::filesystem::path> ownBundle(
    const std::optional<std::filesystem::path>& program = runningProgram());

} // namespace tarnwick
