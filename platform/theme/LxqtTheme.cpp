#include "platform/theme/PanelThemes.h"

#include "core/Text.h"
#include "platform/theme/ThemeColor.h"
#include "platform/theme/ThemeFile.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view panel = "LXQtPanel #BackgroundWidget";

std::string withoutComments(std::string text) {
    for (std::size_t begin = text.find("/*"); begin != std::string::npos; begin = text.find("/*", begin)) {
        const std::size_t end = text.find("*/", begin + 2);
        text.erase(begin, end == std::string::npos ? std::string::npos : end + 2 - begin);
    }
    return text;
}

/// Takes the part before the separator off the text.
std::string_view taken(std::string_view& text, char separator) {
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return Text::trimmed(part);
}

bool isForPanel(std::string_view selectors) {
    while (!selectors.empty()) {
        if (taken(selectors, ',') == panel) {
            return true;
        }
    }
    return false;
}

/// The last color or image of the panel's background; empty without one.
std::string panelBackground(const fs::path& styleSheet) {
    const std::string text = withoutComments(themeText(styleSheet));
    std::string found;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view selectors = taken(rest, '{');
        std::string_view declarations = taken(rest, '}');
        if (!isForPanel(selectors)) {
            continue;
        }
        while (!declarations.empty()) {
            std::string_view declaration = taken(declarations, ';');
            const std::string_view name = taken(declaration, ':');
            if (name == "background" || name == "background-color") {
                found = Text::trimmed(declaration);
            }
        }
    }
    return found;
}

/// A color of the palette that the user has chosen for all programs of the desktop.
std::optional<std::string> paletteColor(const LayeredSettings& settings, std::string_view background) {
    if (background == "palette(window)") {
        return settings.value("Palette", "window_color");
    }
    if (background == "palette(text)") {
        return settings.value("Palette", "text_color");
    }
    return std::nullopt;
}

} // namespace

ThemeReading lxqtPanelTheme(const ThemeFolders& folders) {
    const LayeredSettings settings(folders, "lxqt/lxqt.conf");
    ThemeReading reading{.files = settings.files()};
    const std::string theme = settings.value("General", "theme").value_or("");
    const auto styleSheet = folders.find(fs::path("lxqt/themes") / theme / "lxqt-panel.qss");
    if (theme.empty() || !styleSheet) {
        return reading;
    }
    reading.files.push_back(*styleSheet);
    const std::string background = panelBackground(*styleSheet);
    constexpr double middle = 0.5;
    if (const auto bright = brightnessOf(paletteColor(settings, background).value_or(background))) {
        reading.isDark = *bright < middle;
    }
    return reading;
}

} // namespace tarnwick
