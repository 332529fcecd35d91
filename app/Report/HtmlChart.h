// The chart of a report's time, as a drawing in a page.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

/// The slowest answers and the loss; outages as walls, what was not watched as hatched. With what its signs
/// mean. The page's style sheet has the colors.
[[nodiscard]] std::string htmlChart(const Report& report, const UtcOffset& offset);

} // namespace tarnwick
