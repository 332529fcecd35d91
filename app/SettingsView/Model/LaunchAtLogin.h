// Starting with the user's session, switched on and off.
#pragma once

#include "platform/ports/LoginItem.h"

#include <optional>
#include <string>

namespace tarnwick::LaunchAtLogin {

/// Returns what went wrong, for the user; nothing on success, or when it is so already.
[[nodiscard]] std::optional<std::string> set(LoginItem& item, bool enabled);

} // namespace tarnwick::LaunchAtLogin
