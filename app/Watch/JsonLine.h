// A reading as one line of JSON.
#pragma once

#include "app/Reading/Reading.h"

#include <string>

namespace tarnwick {

/// `time` is that of the line, `judgedAt` the monotonic second of the judgment. `menuTitle` is what the
/// status item shows at this moment. Ends with a line break.
[[nodiscard]] std::string jsonLine(
    const Reading& reading, RunLoop::WallTime time, double judgedAt, const std::string& menuTitle);

/// RFC 3339 in UTC with milliseconds.
[[nodiscard]] std::string timestamp(RunLoop::WallTime time);

} // namespace tarnwick
