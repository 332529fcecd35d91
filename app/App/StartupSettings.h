// The place where the desktop lets its user choose what starts with the session.
#pragma once

#include "platform/qt/DesktopOpener.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::StartupSettings {

using Command = std::vector<std::string>;

/// The commands that show it on a desktop, the best one first, by the names that the desktop gives itself,
/// separated by colons ("ubuntu:GNOME"). Empty where there is no such place, or none that is known.
[[nodiscard]] std::vector<Command> commands(std::string_view desktops);

/// Whether one of those of the present desktop is installed.
[[nodiscard]] bool exists();

/// Shows it on the present desktop with the first command that is installed; without one `ended` is never
/// called. Needs the application object.
void open(DesktopOpened ended = {});

} // namespace tarnwick::StartupSettings
