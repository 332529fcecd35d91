// Brings a window to the front with the keyboard, in answer to the user.
#pragma once

class QWidget;

namespace tarnwick::Foreground {

/// Shows a window, or brings it to the front, with the keyboard. For a window that the user has just asked
/// for, most often with a click in the panel. On X11 window managers that guard the focus can't see that
/// connection, so this tells them that the user asked. Elsewhere it asks as any program may.
void show(QWidget& window);

} // namespace tarnwick::Foreground
