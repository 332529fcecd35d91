// The path of the running program.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// The path that the program was started from; the file there may be a newer one. Nothing when the system
/// does not tell the path, or when no file is there. `self` is the kernel's link to the running program.
[[nodiscard]] std::optional<std::filesystem::path> runningProgram(
    const std::filesystem::path& self = "/proc/self/exe");

/// Starts a program in place of this process, which has ended its work: only standard descriptors
/// stay open, and no signal is blocked. `arguments` without the program's name. Returns only when it fails.
void becomeProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);

} // namespace tarnwick
