#include "core/History/WorstHours.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

/// Orders hours from good to bad.
std::tuple<double, double, double, HistoryTime> badness(const HourSummary& hour) {
    return {
        hour.availability.down, hour.figures.lossPercent().value_or(0),
        hour.figures.percentile95Ms().value_or(0), hour.span.from};
}

} // namespace

std::vector<HourSummary> worstHours(
    const History& history, const Span& span, std::size_t most, const UtcOffset& offset) {
    constexpr std::chrono::hours hour{1};
    const AvailabilityFinder availability(history);
    std::vector<HourSummary> bad;
    for (HistoryTime from = startOfHour(span.from, offset); from < span.to; from += hour) {
        const Span part = common({.from = from, .to = from + hour}, span);
        HourSummary summary{
            .span = part, .availability = availability.in(part), .figures = figuresIn(history, part)};
        if (summary.availability.down > 0 || summary.figures.lost > 0) {
            bad.push_back(std::move(summary));
        }
    }
    std::ranges::sort(bad, std::ranges::greater(), badness);
    bad.resize(std::min(bad.size(), most));
    return bad;
}

} // namespace tarnwick
