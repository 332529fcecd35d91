// Where this user's files lie, by the desktop's base directory rules.
#pragma once

#include <filesystem>
#include <vector>

namespace tarnwick::UserFolders {

/// $XDG_DATA_HOME, else ~/.local/share.
[[nodiscard]] std::filesystem::path data();
/// $XDG_CONFIG_HOME, else ~/.config.
[[nodiscard]] std::filesystem::path config();
/// $XDG_CONFIG_DIRS, else /etc/xdg: what holds for all users, the most important first.
[[nodiscard]] std::vector<std::filesystem::path> systemConfig();

} // namespace tarnwick::UserFolders
