#include "platform/theme/ThemeFile.h"

#include "core/Text.h"

#include <algorithm>
#include <fstream>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr std::streamsize largestThemeFile = 1 << 20; // bytes

/// The name of a key without the flags that some desktops write behind it: `name[$i]`.
std::string_view withoutFlags(std::string_view key) {
    return Text::trimmed(key.substr(0, key.find("[$")));
}

bool isAtOrBelow(const fs::path& folder, const fs::path& base) {
    const fs::path relative = folder.lexically_relative(base);
    return !relative.empty() && *relative.begin() != "..";
}

std::string_view withoutQuotes(std::string_view value) {
    const bool isQuoted = value.size() >= 2 && value.starts_with('"') && value.ends_with('"');
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

} // namespace

std::string themeText(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) { // opening a pipe would wait
        return "";
    }
    std::ifstream stream(file, std::ios::binary);
    std::string text(static_cast<std::size_t>(largestThemeFile), '\0');
    stream.read(text.data(), largestThemeFile);
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

std::optional<std::string> groupValue(std::string_view text, std::string_view group, std::string_view key) {
    std::optional<std::string> found;
    const std::string header = "[" + std::string(group) + "]";
    bool isInGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = Text::trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) {
            isInGroup = line == header;
            continue;
        }
        const std::size_t sign = line.find('=');
        if (isInGroup && sign != std::string_view::npos && withoutFlags(line.substr(0, sign)) == key) {
            found = withoutQuotes(Text::trimmed(line.substr(sign + 1)));
        }
    }
    return found;
}

LayeredSettings::LayeredSettings(const ThemeFolders& folders, const fs::path& name) {
    for (const fs::path& folder : folders.config) {
        const fs::path file = folder / name;
        std::error_code error;
        if (isAtOrBelow(folder, folders.config.front()) || fs::exists(file, error)) {
            files_.push_back(file);
            texts_.push_back(themeText(file));
        }
    }
}

std::optional<std::string> LayeredSettings::value(std::string_view group, std::string_view key) const {
    for (const std::string& text : texts_) {
        if (auto found = groupValue(text, group, key)) {
            return found;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
