// The outages of a report in a page.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

/// How many, whose fault they were, and the outages in the order of their starts: of more than have room on
/// the second page, the longest.
[[nodiscard]] std::string htmlOutages(const Report& report, const UtcOffset& offset);

} // namespace tarnwick
