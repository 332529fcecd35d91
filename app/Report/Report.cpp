#include "app/Report/Report.h"

#include <algorithm>

namespace tarnwick {

namespace {

constexpr std::size_t mostWorstHours = 5;

/// What the history knows of, within the wanted time.
Span coveredSpan(const History& history, const Span& wanted) {
    HistoryTime from = history.until;
    if (!history.periods.empty()) {
        from = std::min(from, history.periods.front().start);
    }
    if (!history.episodes.empty()) {
        from = std::min(from, history.episodes.front().start);
    }
    const Span known{.from = from, .to = history.until};
    const Span covered = common(known, wanted);
    return covered.isEmpty() ? Span{.from = covered.from, .to = covered.from} : covered;
}

std::vector<OutageEntry> outagesIn(const History& history, const Span& span) {
    std::vector<OutageEntry> outages;
    for (const Episode& episode : history.episodes) {
        const bool isOutage = episode.kind == Episode::Kind::outage;
        if (isOutage && spanOf(episode, history.until).overlaps(span)) {
            outages.push_back(
                {.episode = episode, .length = knownLength(episode, history), .lasts = !episode.end});
        }
    }
    return outages;
}

} // namespace

Report makeReport(
    const History& history, const std::string& host, const Span& wanted, const UtcOffset& offset) {
    Report report{.host = host, .span = coveredSpan(history, wanted)};
    if (report.span.isEmpty()) {
        return report;
    }
    report.availability = availabilityIn(history, report.span);
    report.figures = figuresIn(history, report.span);
    report.outages = outagesIn(history, report.span);
    report.worstHours = worstHours(history, report.span, mostWorstHours, offset);
    const auto last = report.span.to - std::chrono::seconds(1);
    report.days = daySummaries(history, localDay(report.span.from, offset), localDay(last, offset), offset);
    return report;
}

} // namespace tarnwick
