// Light or dark windows, as the user prefers them.
#pragma once

#include <optional>

namespace tarnwick::Appearance {

/// Whether the toolkit draws light text on a dark ground at present. Needs a QGuiApplication.
[[nodiscard]] bool isDark();

/// Draws all windows, open ones too, in the toolkit's own colors; in colors of ours where the toolkit's are
/// dark and the user prefers light, or the other way round. Absent: no preference. Needs a
/// QApplication.
void prefer(std::optional<bool> wantsDark);

} // namespace tarnwick::Appearance
