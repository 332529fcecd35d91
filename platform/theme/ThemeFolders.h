// Where desktops keep their themes, and the settings that choose one.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

namespace tarnwick {

/// In both lists the user's own folder comes first, the least important one last.
struct ThemeFolders {
    std::vector<std::filesystem::path> config;
    std::vector<std::filesystem::path> data;

    [[nodiscard]] static ThemeFolders ofSession();

    /// The first of the data folders' files with this relative path that exists.
    [[nodiscard]] std::optional<std::filesystem::path> find(const std::filesystem::path& name) const;
};

/// What themes say at present.
struct ThemeReading {
    /// Whether the ground is dark; absent where they do not say.
    std::optional<bool> isDark = std::nullopt;
    /// A change of these files may change the reading.
    std::vector<std::filesystem::path> files{};
};

/// Reads files each time that it is called.
using ThemeReader = ThemeReading (*)(const ThemeFolders&);

} // namespace tarnwick
