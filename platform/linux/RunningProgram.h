// The path of the running program.
#pragma once

#include <filesystem>
#include <optional>

namespace tarnwick {

/// The path that the program was started from; the file there may be a newer one. Nothing when the system
/// does not tell the path, or when no file is there. `self` is the kernel's link to the running program.
[[nodiscard]] std::optional<std::filesystem::path> runningProgram(
    const std::filesystem::path& self = "/proc/self/exe");

} // namespace tarnwick
