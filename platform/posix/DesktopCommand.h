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

/// Whether a program is there to be started: at this path, or by this name in one of the folders of $PATH.
[[nodiscard]] bool isFound(const std::string& program);

} // namespace tarnwick::DesktopCommand
