// Where the program's own icons are.
#pragma once

#include "platform/linux/RunningProgram.h"

#include <filesystem>
#include <optional>

namespace tarnwick {

/// A folder with the program's icons by name, laid out as an icon theme: relative to the program, where
/// installing puts it and where the build tree has it. Empty where other programs could not read it: in a
/// sandbox, or if the icons are not there.
[[nodiscard]] std::filesystem::path ownIcons(
    bool isSandboxed, const std::optional<std::filesystem::path>& program = runningProgram());

} // namespace tarnwick
