// Light or dark windows, as the user prefers them.
#pragma once

#include <optional>

namespace tarnwick::Appearance {

/// Whether the toolkit draws light text on a dark ground at present. Needs a QGuiApplication.
[[nodiscard]] bool isDark();

/// Draws all windows, also open ones, light or dark as the user prefers: in the toolkit's own colors where
/// they fit, else in colors of ours. Absent: no preference, so the toolkit's own. Needs a QApplication.
void prefer(std::optional<bool> wantsDark);

} // namespace tarnwick::Appearance
