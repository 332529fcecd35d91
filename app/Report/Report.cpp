#include "app/Report/Report.h"

#include "core/History/Spans.h"

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

constexpr std::size_t mostWorstHours = 5;
constexpr std::int64_t mostChartParts = 180;

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

/// As many as make each of them about as long as people count.
std::int64_t chartParts(const Span& span) {
    using std::chrono::hours;
    using std::chrono::minutes;
    constexpr std::array<minutes, 14> roundLengths{
        minutes(1), minutes(2), minutes(5), minutes(10), minutes(15), minutes(30), hours(1),
        hours(2),   hours(3),   hours(6),   hours(12),   hours(24),   hours(48),   hours(120)};
    for (const std::chrono::seconds length : roundLengths) {
        const std::int64_t count = (span.length() + length - std::chrono::seconds(1)) / length;
        if (count <= mostChartParts) {
            return count;
        }
    }
    return mostChartParts;
}

bool isWatched(const HistoryBucket& bucket) {
    return bucket.slowestMs || bucket.lossShare > 0 || bucket.isDown;
}

ReportChart chartOf(const History& history, const Span& span) {
    ReportChart chart{
        .buckets = chartBuckets(history, span, static_cast<int>(chartParts(span))),
        .outages = episodeSpansIn(history, span, Episode::Kind::outage)};
    chart.unwatched = gapsIn(history, span);
    for (const HistoryBucket& bucket : chart.buckets) {
        if (!isWatched(bucket)) {
            chart.unwatched.push_back(bucket.span);
        }
    }
    chart.unwatched = united(std::move(chart.unwatched));
    return chart;
}

} // namespace

Report makeReport(
    const History& history, const std::string& host, const Span& wanted, const UtcOffset& offset) {
    Report report{.host = host, .wanted = wanted, .span = coveredSpan(history, wanted)};
    if (report.span.isEmpty()) {
        return report;
    }
    report.availability = availabilityIn(history, report.span);
    report.figures = figuresIn(history, report.span);
    report.outages = outagesIn(history, report.span);
    report.worstHours = worstHours(history, report.span, mostWorstHours, offset);
    const auto last = report.span.to - std::chrono::seconds(1);
    report.days = daySummaries(history, localDay(report.span.from, offset), localDay(last, offset), offset);
    report.chart = chartOf(history, report.span);
    return report;
}

std::chrono::seconds longestOutage(const Report& report) {
    std::chrono::seconds longest{};
    for (const OutageEntry& outage : report.outages) {
        longest = std::max(longest, outage.length);
    }
    return longest;
}

} // namespace tarnwick
