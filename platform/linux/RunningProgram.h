// Where the program that is running lies.
#pragma once

#include <filesystem>
#include <optional>

namespace tarnwick {

/// Its present file, also after a newer one was put in its place. Nothing when the system does not tell, or
/// nothing is there anymore. `self` is the kernel's link to it.
[[nodiscard]] std::optional<std::filesystem::path> runningProgram(
    const std::filesystem::path& self = "/proc/self/exe");

} // namespace tarnwick
