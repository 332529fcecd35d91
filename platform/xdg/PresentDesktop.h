// Which desktop the program runs in.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::PresentDesktop {

/// What the desktop calls itself in the environment, its own name before that of a relative: "ubuntu",
/// "GNOME".
[[nodiscard]] std::vector<std::string> names();

/// Whether one of the names is theirs.
[[nodiscard]] bool isGnome();
[[nodiscard]] bool isPlasma();

} // namespace tarnwick::PresentDesktop
