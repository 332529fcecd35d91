// What the themes of desktops say of the ground that their panels draw behind the item.
#pragma once

#include "platform/theme/ThemeFolders.h"

namespace tarnwick {

/// LXQt: the panel's background in the style sheet of the theme that `lxqt.conf` names.
[[nodiscard]] ThemeReading lxqtPanelTheme(const ThemeFolders& folders);

/// Plasma: the text color of the theme that `plasmarc` names. A theme without colors of its own follows the
/// programs' colors.
[[nodiscard]] ThemeReading plasmaPanelTheme(const ThemeFolders& folders);

/// Plasma: the programs' colors in `kdeglobals`, light where it has none.
[[nodiscard]] ThemeReading plasmaProgramColors(const ThemeFolders& folders);

} // namespace tarnwick
