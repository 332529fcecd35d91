// The settings as a file in the desktop's text editor.
#pragma once

#include <filesystem>

namespace tarnwick {

/// Makes the file, with nothing set, where there is none. Returns at once; a window says where the file is
/// when nothing opens it, and what is wrong when it can't be made. Needs the application object.
void openSettingsFile(const std::filesystem::path& path);

} // namespace tarnwick
