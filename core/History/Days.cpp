#include "core/History/Days.h"

#include <algorithm>

namespace tarnwick {

namespace {

bool hasKind(const History& history, const Span& span, Episode::Kind kind) {
    return !episodeSpansIn(history, span, kind).empty();
}

DaySummary::Worst worstIn(const History& history, const Span& span, double watchedSeconds) {
    if (hasKind(history, span, Episode::Kind::outage)) {
        return DaySummary::Worst::down;
    }
    if (hasKind(history, span, Episode::Kind::degradation)) {
        return DaySummary::Worst::degraded;
    }
    return watchedSeconds > 0 ? DaySummary::Worst::good : DaySummary::Worst::notWatched;
}

DaySummary summaryOf(
    const History& history, const AvailabilityFinder& finder, std::chrono::year_month_day day,
    const UtcOffset& offset) {
    const Span whole = spanOfDay(day, offset);
    const Span span{.from = whole.from, .to = std::clamp(history.until, whole.from, whole.to)};
    const Availability availability = finder.in(span);
    const auto outages = std::ranges::count_if(history.episodes, [&](const Episode& episode) {
        return episode.kind == Episode::Kind::outage && spanOf(episode, history.until).overlaps(span);
    });
    return {
        .day = day,
        .span = span,
        .worst = worstIn(history, span, availability.watched),
        .availability = availability,
        .outages = static_cast<int>(outages),
        .figures = figuresIn(history, span),
    };
}

} // namespace

std::vector<DaySummary> daySummaries(
    const History& history, std::chrono::year_month_day first, std::chrono::year_month_day last,
    const UtcOffset& offset) {
    const AvailabilityFinder finder(history);
    std::vector<DaySummary> summaries;
    for (std::chrono::sys_days day = first; day <= std::chrono::sys_days(last); day += std::chrono::days(1)) {
        summaries.push_back(summaryOf(history, finder, day, offset));
    }
    return summaries;
}

} // namespace tarnwick
