// Latency, loss and the worst hours of a report in a page.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

[[nodiscard]] std::string htmlFigures(const PeriodFigures& figures);
/// Nothing without bad hours.
[[nodiscard]] std::string htmlWorstHours(const std::vector<HourSummary>& hours, const UtcOffset& offset);

} // namespace tarnwick
