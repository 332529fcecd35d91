// A report as plain text, for a terminal or a message.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

[[nodiscard]] std::string reportText(const Report& report, const UtcOffset& offset);

} // namespace tarnwick
