// The days of a report in a page.
#pragma once

#include "core/History/Days.h"

#include <string>
#include <vector>

namespace tarnwick {

/// Two weeks at most as a list with figures, more as a drawing with a line for each month.
[[nodiscard]] std::string htmlDays(const std::vector<DaySummary>& days);

} // namespace tarnwick
