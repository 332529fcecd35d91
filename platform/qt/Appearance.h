// Light or dark windows, as the user prefers them.
#pragma once

#include <optional>

namespace tarnwick::Appearance {

/// Whether the toolkit draws light text on a dark ground at present. Needs a QGuiApplication.
[[nodiscard]] bool isDark();

/// Gives the toolkit's own colors to all windows, also to those that are open; colors of our own where the
/// toolkit knows nothing of what the user prefers and would draw the contrary. Absent: no preference. Needs a
/// QApplication.
void prefer(std::optional<bool> wantsDark);

} // namespace tarnwick::Appearance
