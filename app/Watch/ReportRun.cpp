#include "app/Watch/ReportRun.h"

#include "app/Report/Report.h"
#include "app/Report/ReportCsv.h"
#include "app/Report/ReportText.h"
#include "app/Report/TimeArgument.h"
#include "app/Watch/ReportJson.h"

namespace tarnwick {

std::variant<std::string, UsageError> reportFor(
    Journal& journal, const ReportOptions& options, const std::string& host, HistoryTime now,
    const UtcOffset& offset) {
    const auto since = timeIn(options.since, now, offset);
    if (!since) {
        return wrongTime("--since", options.since);
    }
    const auto until = timeIn(options.until, now, offset);
    if (!until) {
        return wrongTime("--until", options.until);
    }
    if (*until <= *since) {
        return UsageError{"--until must be later than --since"};
    }
    const Span wanted{.from = *since, .to = *until};
    const std::string name = options.host.value_or(host);
    const Report report = makeReport(journal.read(name, wanted), name, wanted, offset);
    switch (options.format) {
    case ReportOptions::Format::csv:
        return reportCsv(report, offset);
    case ReportOptions::Format::json:
        return reportJson(report, offset);
    case ReportOptions::Format::text:
        break;
    }
    return reportText(report, offset);
}

} // namespace tarnwick
