// "tarnwick-watch report": what the journal tells.
#pragma once

#include "app/CommandLine/ReportOptions.h"
#include "app/Report/ReportHtml.h"
#include "core/History/LocalTime.h"
#include "platform/ports/Journal.h"

#include <string>
#include <variant>

namespace tarnwick {

struct ToldReport {
    std::string text{};
    std::string hint{}; ///< for the user beside it: which hosts there are, where the journal has others
};

/// `host` is the one of the settings.
[[nodiscard]] std::variant<ToldReport, UsageError> reportFor(
    Journal& journal, const ReportOptions& options, const std::string& host, const ReportOrigin& origin,
    const UtcOffset& offset);

} // namespace tarnwick
