#include "platform/theme/PanelThemes.h"

#include "platform/theme/ThemeColor.h"
#include "platform/theme/ThemeFile.h"

#include <string>
#include <string_view>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view groupOfWindows = "Colors:Window";
constexpr std::string_view colorOfText = "ForegroundNormal";

/// The text's color tells more than the background's, which the theme may cover with pictures.
std::optional<bool> isDarkBelow(const std::optional<std::string>& textColor) {
    constexpr double middle = 0.5;
    const auto bright = textColor ? brightnessOf(*textColor) : std::nullopt;
    return bright ? std::optional(*bright > middle) : std::nullopt;
}

} // namespace

ThemeReading plasmaProgramColors(const ThemeFolders& folders) {
    const LayeredSettings settings(folders, "kdeglobals");
    ThemeReading reading{
        .isDark = isDarkBelow(settings.value(groupOfWindows, colorOfText)), .files = settings.files()};
    if (reading.isDark) {
        return reading;
    }
    reading.isDark = false;
    const std::string scheme = settings.value("General", "ColorScheme").value_or("");
    if (const auto file = folders.find(fs::path("color-schemes") / (scheme + ".colors"))) {
        reading.isDark =
            isDarkBelow(groupValue(themeText(*file), groupOfWindows, colorOfText)).value_or(false);
    }
    return reading;
}

ThemeReading plasmaPanelTheme(const ThemeFolders& folders) {
    const LayeredSettings settings(folders, "plasmarc");
    const std::string theme = settings.value("Theme", "name").value_or("default");
    const auto colors = folders.find(fs::path("plasma/desktoptheme") / theme / "colors");
    ThemeReading reading{.files = settings.files()};
    if (colors) {
        reading.files.push_back(*colors);
        reading.isDark = isDarkBelow(groupValue(themeText(*colors), groupOfWindows, colorOfText));
    }
    if (!reading.isDark) {
        const ThemeReading programs = plasmaProgramColors(folders);
        reading.isDark = programs.isDark;
        reading.files.insert(reading.files.end(), programs.files.begin(), programs.files.end());
    }
    return reading;
}

} // namespace tarnwick
