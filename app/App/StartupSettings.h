// The desktop's own settings for programs that start with the session.
#pragma once

#include "platform/qt/DesktopOpener.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::StartupSettings {

using Command = std::vector<std::string>;

/// The commands that open them, the best one first.
/// `desktops` are the desktop's own names, separated by colons ("ubuntu:GNOME").
/// Empty for a desktop without such settings and for unknown ones.
[[nodiscard]] std::vector<Command> commands(std::string_view desktops);

/// Whether a command of the present desktop is installed.
[[nodiscard]] bool exists();

/// Runs the first installed command of the present desktop. Without one `ended` is never called. Needs the
/// application object.
void open(DesktopOpened ended = {});

} // namespace tarnwick::StartupSettings
