// Where this user's files lie, by the desktop's base directory rules.
#pragma once

#include <filesystem>

namespace tarnwick::UserFolders {

/// $XDG_DATA_HOME, else ~/.local/share.
[[nodiscard]] std::filesystem::path data();
/// $XDG_CONFIG_HOME, else ~/.config.
[[nodiscard]] std::filesystem::path config();

} // namespace tarnwick::UserFolders
