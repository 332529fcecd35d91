// The settings as a file in the desktop's text editor.
#pragma once

#include <filesystem>

namespace tarnwick {

/// Makes the file, with nothing set, where there is none. Says where it is when nothing opens it.
void openSettingsFile(const std::filesystem::path& path);

} // namespace tarnwick
