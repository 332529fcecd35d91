#include "app/Watch/ReportRun.h"

#include "app/Report/Report.h"
#include "app/Report/ReportCsv.h"
#include "app/Report/ReportText.h"
#include "app/Report/TimeArgument.h"
#include "app/Watch/ReportJson.h"

#include <algorithm>
#include <optional>

namespace tarnwick {

namespace {

/// "one.example, two.example and 3 more".
std::string listedHosts(const std::vector<std::string>& hosts) {
    constexpr std::size_t mostListedHosts = 5;
    const std::size_t count = std::min(hosts.size(), mostListedHosts);
    std::string text = hosts.front();
    for (std::size_t index = 1; index < count; ++index) {
        text += (index + 1 < hosts.size() ? ", " : " and ") + hosts[index];
    }
    return hosts.size() > count ? text + " and " + std::to_string(hosts.size() - count) + " more" : text;
}

/// Nothing where the journal knows the host, or no other one.
std::string hintAtOthers(const std::string& host, const std::vector<std::string>& known) {
    const bool isKnown = std::ranges::find(known, host) != known.end();
    return isKnown || known.empty() ? ""
                                    : "The history has nothing of " + host + ", but of " + listedHosts(known)
                                          + ": name one with --host.";
}

std::string writtenReport(
    const Report& report, ReportOptions::Format format, const ReportOrigin& origin, const UtcOffset& offset) {
    switch (format) {
    case ReportOptions::Format::csv:
        return reportCsv(report, offset);
    case ReportOptions::Format::json:
        return reportJson(report, offset);
    case ReportOptions::Format::html:
        return reportHtml(report, origin, offset);
    case ReportOptions::Format::text:
        break;
    }
    return reportText(report, offset);
}

/// What a report of the time needs: the days that it touches as a whole, and outages from their beginning.
History readFor(Journal& journal, const std::string& host, const Span& wanted, const UtcOffset& offset) {
    const HistoryTime last = wanted.to - std::chrono::seconds(1);
    const Span days{
        .from = spanOfDay(localDay(wanted.from, offset), offset).from,
        .to = spanOfDay(localDay(last, offset), offset).to};
    History history = journal.read(host, days);
    const bool beginsEarlier = !history.episodes.empty() && history.episodes.front().start < days.from;
    return beginsEarlier ? journal.read(host, {.from = history.episodes.front().start, .to = days.to})
                         : history;
}

} // namespace

std::variant<ToldReport, UsageError> reportFor(
    Journal& journal, const ReportOptions& options, const std::string& host, const ReportOrigin& origin,
    const UtcOffset& offset) {
    const auto since = timeIn(options.since, origin.made, offset);
    if (!since) {
        return wrongTime("--since", options.since);
    }
    const auto until = timeIn(options.until, origin.made, offset);
    if (!until) {
        return wrongTime("--until", options.until);
    }
    if (*until <= *since) {
        return UsageError{"--until must be later than --since"};
    }
    const Span wanted{.from = *since, .to = *until};
    const std::string name = options.host.value_or(host);
    const Report report = makeReport(readFor(journal, name, wanted, offset), name, wanted, offset);
    return ToldReport{
        .text = writtenReport(report, options.format, origin, offset),
        .hint = report.span.isEmpty() ? hintAtOthers(name, journal.hosts()) : ""};
}

} // namespace tarnwick
