// The desktop's own settings for programs that start with the session.
#pragma once

#include "platform/qt/DesktopOpener.h"

#include <string>
#include <vector>

namespace tarnwick::StartupSettings {

using Command = std::vector<std::string>;

/// The commands that open them, the best one first.
/// `desktops` are the desktop's own names.
/// Empty for a desktop without such settings and for unknown ones.
[[nodiscard]] std::vector<Command> commands(const std::vector<std::string>& desktops);

/// Whether a command of the present desktop is installed.
[[nodiscard]] bool exists();

/// Runs the first installed command of the present desktop. Without one `ended` is never called. Needs the
/// application object.
void open(DesktopOpened ended = {});

} // namespace tarnwick::StartupSettings
