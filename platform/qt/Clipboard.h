// The desktop's clipboard.
#pragma once

#include <string>

namespace tarnwick::Clipboard {

/// Makes `text` what the user pastes next, until the program ends or something else is copied. On Wayland a
/// program may copy only while one of its windows has the focus: without one it copies when it gets the
/// focus.
void copy(const std::string& text);

} // namespace tarnwick::Clipboard
