// The outages of a report for spreadsheets and scripts.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

/// A line of names, then one for each outage: start, end (empty while it lasts), seconds without gaps,
/// verdict, likelihood, evidence, address, interface, pings lost. Comma-separated, as RFC 4180 has it.
[[nodiscard]] std::string reportCsv(const Report& report, const UtcOffset& offset);

} // namespace tarnwick
