// Command lines as desktop entries hold them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::DesktopCommand {

/// The value of Exec that starts the program at this path, whatever letters are in it.
[[nodiscard]] std::string starting(const std::filesystem::path& program);

/// The program that such a value starts, as it is named there; nothing when the value can't be read.
[[nodiscard]] std::optional<std::string> program(std::string_view command);

/// Where the program lies that would be started: at this path, or by this name in the first of the folders of
/// $PATH that has it.
[[nodiscard]] std::optional<std::filesystem::path> find(const std::string& program);

} // namespace tarnwick::DesktopCommand
