// A report as a page to print and to send.
#pragma once

#include "app/Report/Report.h"

#include <string>

namespace tarnwick {

/// What a page says about itself.
struct ReportOrigin {
    std::string version{}; ///< of the program
    HistoryTime made{};
};

/// One file of HTML, which is XML too: it needs nothing else, runs nothing, and prints on two pages.
[[nodiscard]] std::string reportHtml(
    const Report& report, const ReportOrigin& origin, const UtcOffset& offset);

} // namespace tarnwick
