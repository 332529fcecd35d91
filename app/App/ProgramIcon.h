// The program's own icon, for its windows.
#pragma once

#include <QIcon>

namespace tarnwick {

/// From the desktop's icon theme, else the built-in one.
[[nodiscard]] QIcon programIcon();

} // namespace tarnwick
