// The state of the connection in one line of plain text.
#pragma once

#include "app/Monitor/Monitor.h"

#include <string>

namespace tarnwick {

/// Local time, quality word, latency, loss and host, in columns. Ends with a line break.
[[nodiscard]] std::string plainLine(const Monitor& monitor, RunLoop::WallTime time);

} // namespace tarnwick
