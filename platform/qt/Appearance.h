// Light or dark windows, as the user prefers them.
#pragma once

#include <optional>

class QPalette;

namespace tarnwick::Appearance {

/// Whether these are the colors of a user who needs the most contrast.
[[nodiscard]] bool isBlackAndWhite(const QPalette& palette);

/// Whether text is drawn light on a dark ground at present. Needs a QGuiApplication.
[[nodiscard]] bool isDark();

/// Draws all windows, also open ones, in our own colors: light or dark as the user prefers, and black and
/// white where more contrast is wanted. Absent: as light or dark as the toolkit would draw them. The colors
/// of a desktop that are black and white themselves stay. To be called again when the toolkit's palette
/// changes. Needs a QApplication.
void prefer(std::optional<bool> wantsDark, bool wantsContrast = false);

} // namespace tarnwick::Appearance
