// Tells an X11 desktop that a program has started.
#pragma once

#include <string>

namespace tarnwick::X11 {

/// `id` is the one that the program was started with. Until it is told, the desktop shows a busy pointer for
/// some seconds: a program may have started without a window. Does nothing without an id, and where there is
/// no X11 display.
void endStartupSequence(const std::string& id);

} // namespace tarnwick::X11
