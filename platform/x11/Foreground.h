// Bringing a window to the front with the keyboard, in answer to the user.
#pragma once

class QWidget;

namespace tarnwick::Foreground {

/// Shows a window, or brings it to the front, with the keyboard. For one that the user has just asked for,
/// most often in another program's window: the panel. X11 knows of no such connection, and window managers
/// that guard the focus would leave it where it is; so they are told that it is the user's own wish.
/// Elsewhere it asks as any program may.
void show(QWidget& window);

} // namespace tarnwick::Foreground
