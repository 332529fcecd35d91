// The path of the running program.
#pragma once

#include <filesystem>
#include <optional>

namespace tarnwick {

/// The file at that path now, even if it has replaced the one that was started. Nothing when the system does
/// not say or the file is gone. `self` is the kernel's link to it.
[[nodiscard]] std::optional<std::filesystem::path> runningProgram(
    const std::filesystem::path& self = "/proc/self/exe");

} // namespace tarnwick
