// Lets this user ping, after an administrator has agreed.
#pragma once

#include "platform/linux/PingPermission.h"
#include "platform/qt/DesktopOpener.h"

namespace tarnwick::PingAllowance {

/// Whether the desktop can ask an administrator.
[[nodiscard]] bool canAsk();

/// Asks, then sets this range now and for each later boot. `ended` is told whether it is set.
void ask(const PingPermission::GroupRange& range, DesktopOpened ended);

} // namespace tarnwick::PingAllowance
