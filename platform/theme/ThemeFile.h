// The texts of desktops' settings and themes.
#pragma once

#include "platform/theme/ThemeFolders.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// The beginning of a file, 1 MiB at most; empty for all that is no readable file.
[[nodiscard]] std::string themeText(const std::filesystem::path& file);

/// The last value of a key in a group of a text with lines like `[Group]` and `Key=Value`.
[[nodiscard]] std::optional<std::string> groupValue(
    std::string_view text, std::string_view group, std::string_view key);

/// Settings files of the same name in several folders. A key counts in the first file that has it.
class LayeredSettings {
public:
    LayeredSettings(const ThemeFolders& folders, const std::filesystem::path& name);

    [[nodiscard]] std::optional<std::string> value(std::string_view group, std::string_view key) const;

    /// Those that exist, and those in the user's own folder and below even if they do not: a desktop may
    /// write them later.
    [[nodiscard]] const std::vector<std::filesystem::path>& files() const { return files_; }

private:
    std::vector<std::filesystem::path> files_;
    std::vector<std::string> texts_; ///< as many as files
};

} // namespace tarnwick
