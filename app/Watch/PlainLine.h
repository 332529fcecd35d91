// The state of the connection in one line of plain text.
#pragma once

#include "app/Reading/Reading.h"

#include <string>

namespace tarnwick {

/// Local time, quality word, latency, loss and host, in columns. Ends with a line break.
[[nodiscard]] std::string plainLine(const Reading& reading, RunLoop::WallTime time);

} // namespace tarnwick
