// Starting with the user's session, switched on and off.
#pragma once

#include "platform/ports/LoginItem.h"

#include <optional>
#include <string>

namespace tarnwick::LaunchAtLogin {

/// Nothing on success and where nothing is to be done, else what went wrong, for the user.
[[nodiscard]] std::optional<std::string> set(LoginItem& item, bool enabled);

} // namespace tarnwick::LaunchAtLogin
