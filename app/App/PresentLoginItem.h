// How the program is made to start with the session here.
#pragma once

#include "platform/bus/BusConnection.h"
#include "platform/ports/LoginItem.h"

#include <memory>

namespace tarnwick {

/// An entry in the user's folder; inside a sandbox, where no desktop reads that folder, the desktop's portal.
/// `bus` is the session's and outlives the item.
[[nodiscard]] std::unique_ptr<LoginItem> presentLoginItem(BusConnection& bus, bool isSandboxed);

} // namespace tarnwick
