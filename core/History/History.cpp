#include "core/History/History.h"

#include "core/History/Spans.h"

namespace tarnwick {

namespace {

/// The wanted ones within `span`; each moment once.
template<class Wanted>
std::vector<Span> chosenGaps(const History& history, const Span& span, Wanted isWanted) {
    std::vector<Span> chosen;
    for (const Gap& gap : history.gaps) {
        if (isWanted(gap)) {
            chosen.push_back(gap.span);
        }
    }
    return united(within(chosen, span));
}

} // namespace

Span spanOf(const Episode& episode, HistoryTime until) {
    return {.from = episode.start, .to = episode.end.value_or(until)};
}

std::chrono::seconds knownLength(const Episode& episode, const History& history) {
    const Span span = spanOf(episode, history.until);
    return lengthOf(without({span}, gapsIn(history, span)));
}

std::span<const Period> periodsIn(const History& history, const Span& span) {
    if (span.isEmpty()) {
        return {};
    }
    const auto& periods = history.periods;
    auto first =
        std::ranges::upper_bound(periods, span.from - secondsIn(PeriodLength::hour), {}, &Period::start);
    const auto last = std::ranges::lower_bound(first, periods.end(), span.to, {}, &Period::start);
    while (first != last && !first->span().overlaps(span)) {
        ++first;
    }
    return {first, last};
}

std::vector<Span> gapsIn(const History& history, const Span& span) {
    return chosenGaps(history, span, [](const Gap&) { return true; });
}

std::vector<Span> gapsIn(const History& history, const Span& span, Gap::Kind kind) {
    return chosenGaps(history, span, [kind](const Gap& gap) { return gap.kind == kind; });
}

std::vector<Span> episodeSpansIn(const History& history, const Span& span, Episode::Kind kind) {
    std::vector<Span> spans;
    for (const Episode& episode : history.episodes) {
        if (episode.kind == kind) {
            spans.push_back(spanOf(episode, history.until));
        }
    }
    return without(within(spans, span), gapsIn(history, span));
}

PeriodFigures figuresIn(const History& history, const Span& span) {
    PeriodFigures figures;
    for (const Period& period : periodsIn(history, span)) {
        if (span.from <= period.start && period.start < span.to) {
            figures.merge(period.figures);
        }
    }
    return figures;
}

double watchedSecondsIn(const History& history, const Span& span) {
    double sum = 0;
    for (const Period& period : periodsIn(history, span)) {
        // The present one is not over.
        const Span known = common(period.span(), {.from = period.start, .to = history.until});
        const std::chrono::duration<double> inside = common(known, span).length();
        sum += known.isEmpty() ? 0 : period.figures.watchedSeconds * (inside / known.length());
    }
    return sum;
}

} // namespace tarnwick
