// Brings a window to the front with the keyboard, in answer to the user.
#pragma once

class QWidget;

namespace tarnwick::Foreground {

/// Shows a window, or brings it to the front, with the keyboard. For a window that the user has just asked
/// for, most often with a click in the panel. X11 window managers do not see that click, and may keep the
/// keyboard from the window: this tells them that the user asked.
void show(QWidget& window);

} // namespace tarnwick::Foreground
