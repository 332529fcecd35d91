// Command lines as desktop entries hold them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::DesktopCommand {

/// The value of Exec that starts the program at this path, with any characters in it. `option` is of plain
/// letters.
[[nodiscard]] std::string starting(const std::filesystem::path& program, const std::string& option);

/// The program as the value of Exec names it; nothing when the value can't be read.
[[nodiscard]] std::optional<std::string> program(std::string_view command);

/// The file that would be started: `program` itself if it is a path, else the first of this name in $PATH.
[[nodiscard]] std::optional<std::filesystem::path> find(const std::string& program);

} // namespace tarnwick::DesktopCommand
