// How what a report's page says was measured.
#pragma once

#include "app/Report/Report.h"
#include "app/Report/ReportHtml.h"

#include <string>

namespace tarnwick {

[[nodiscard]] std::string htmlMethod(
    const Report& report, const ReportOrigin& origin, const UtcOffset& offset);

} // namespace tarnwick
