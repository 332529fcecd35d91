// The program's own icon, for its windows.
#pragma once

#include <QIcon>

namespace tarnwick {

/// As the desktop's icon theme has it, or else the one that the program brings.
[[nodiscard]] QIcon programIcon();

} // namespace tarnwick
