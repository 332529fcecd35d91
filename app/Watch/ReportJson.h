// A report as one JSON object.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

/// In one line, which ends. Times in ISO 8601; what is not known is null.
[[nodiscard]] std::string reportJson(const Report& report, const UtcOffset& offset);

} // namespace tarnwick
