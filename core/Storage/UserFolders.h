// The user's folders by the XDG base directory specification.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick::UserFolders {

/// $XDG_DATA_HOME, else ~/.local/share.
[[nodiscard]] std::filesystem::path data();
/// $XDG_CONFIG_HOME, else ~/.config.
[[nodiscard]] std::filesystem::path config();
/// $XDG_STATE_HOME, else ~/.local/state.
[[nodiscard]] std::filesystem::path state();
/// $XDG_CONFIG_DIRS, else /etc/xdg: settings for all users, the most important folder first.
[[nodiscard]] std::vector<std::filesystem::path> systemConfig();
/// $XDG_DATA_DIRS, else /usr/local/share and /usr/share: data for all users, in the same order.
[[nodiscard]] std::vector<std::filesystem::path> systemData();

/// For people, with "~" for the user's home folder.
[[nodiscard]] std::string shown(const std::filesystem::path& path);

} // namespace tarnwick::UserFolders
