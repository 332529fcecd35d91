// The place where the desktop lets its user choose what starts with the session.
#pragma once

#include "platform/qt/DesktopOpener.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::StartupSettings {

/// The command that shows it on a desktop, by the names that the desktop gives itself, separated by colons
/// ("ubuntu:GNOME"). Empty where there is no such place, or none that is known.
[[nodiscard]] std::vector<std::string> command(std::string_view desktops);

/// Shows it on the present desktop, if that has one; else `ended` is never called. Needs the application
/// object.
void open(DesktopOpened ended = {});

} // namespace tarnwick::StartupSettings
