// Asks an X11 window manager to give a window the keyboard, in answer to the user.
#pragma once

#include <cstdint>

namespace tarnwick::X11 {

/// `window` is the server's number of a window of this program. For a window that the user has just asked
/// for, by a click that the window manager did not see. Does nothing where there is no X11 display, and
/// where no window manager knows the request. Waits for the server's answers, as the toolkit does.
void requestActivation(std::uint32_t window);

} // namespace tarnwick::X11
