#include "app/OutagesView/Model/OutagesPage.h"

#include "app/Reading/Format.h"
#include "app/Report/BlameText.h"
#include "app/Report/LocalText.h"
#include "core/History/CalendarNames.h"
#include "core/History/WorstHours.h"

#include <algorithm>
#include <ranges>

namespace tarnwick {

namespace {

constexpr const char* keepsNothing = "No history is kept: that is switched off in the settings.";

std::string shareOrUnknown(std::optional<double> percent) {
    return percent ? LocalText::number(*percent, 2) + "%" : "unknown";
}

std::string dateOf(std::chrono::year_month_day day) {
    return std::string(CalendarNames::of(std::chrono::weekday(day))) + ", " + LocalText::day(day);
}

/// How the connection was on a day.
std::string stateOf(const DaySummary& day) {
    if (day.worst == DaySummary::Worst::notWatched) {
        return "not watched";
    }
    const std::string text = LocalText::availability(day.availability.percent()) + " available";
    if (day.worst == DaySummary::Worst::down) {
        const std::string count = day.outages == 1 ? "1 outage" : std::to_string(day.outages) + " outages";
        return text + ", " + count + ", down for " + LocalText::length(day.availability.down);
    }
    return day.worst == DaySummary::Worst::degraded ? text + ", at times poor" : text;
}

OutagesDay outagesDay(const DaySummary& summary) {
    const std::string date = dateOf(summary.day);
    return {.summary = summary, .date = date, .text = date + ": " + stateOf(summary)};
}

/// The day in which the moment lies, or the first one.
std::size_t dayAt(const std::vector<OutagesDay>& days, HistoryTime time) {
    const auto begins = [](const OutagesDay& day) { return day.summary.span.from; };
    const auto after = std::ranges::upper_bound(days, time, {}, begins);
    return after == days.begin() ? 0 : static_cast<std::size_t>(after - days.begin()) - 1;
}

/// "Provider (likely)"; without the likelihood where it is certain, and where nothing is clear.
std::string whoseFault(const std::optional<Verdict>& verdict) {
    if (!verdict || verdict->blame == Blame::unclear) {
        return std::string(blameText(Blame::unclear));
    }
    const std::string blame(blameText(verdict->blame));
    const bool isCertain = verdict->likelihood == Likelihood::certain;
    return isCertain ? blame : blame + " (" + std::string(nameOf(verdict->likelihood)) + ")";
}

OutagesRow outagesRow(
    const Episode& episode, const History& history, const std::vector<OutagesDay>& days,
    const UtcOffset& offset) {
    const auto& verdict = episode.verdict;
    const bool saysMore = verdict && verdict->evidence != notClearYet;
    return {
        .kind = episode.kind,
        .span = spanOf(episode, history.until),
        .day = dayAt(days, episode.start),
        .when = LocalText::time(episode.start, offset),
        .length = LocalText::length(knownLength(episode, history)) + (episode.end ? "" : " so far"),
        .blame = whoseFault(verdict),
        .evidence = saysMore ? verdict->evidence : std::string()};
}

bool touches(const OutagesRow& row, const Span& day, Episode::Kind kind) {
    return row.kind == kind && row.span.overlaps(day);
}

std::string worstHourOf(const History& history, const Span& span, const UtcOffset& offset) {
    const std::vector<HourSummary> worst = worstHours(history, span, 1, offset);
    if (worst.empty()) {
        return "none";
    }
    const HourSummary& hour = worst.front();
    constexpr std::size_t lengthOfDate = sizeof("2026-11-23");
    const std::string time = LocalText::minute(hour.span.from, offset).substr(lengthOfDate);
    const bool wasDown = hour.availability.down > 0;
    return time + ", "
           + (wasDown ? "down for " + LocalText::length(hour.availability.down)
                      : shareOrUnknown(hour.figures.lossPercent()) + " lost");
}

/// When the history begins to know something; nothing for an empty one.
std::optional<HistoryTime> firstMoment(const History& history) {
    std::optional<HistoryTime> first;
    if (!history.periods.empty()) {
        first = history.periods.front().start;
    }
    if (!history.episodes.empty()) {
        first = std::min(first.value_or(HistoryTime::max()), history.episodes.front().start);
    }
    return first;
}

} // namespace

std::string OutagesRow::text() const {
    const char* const state = kind == Episode::Kind::outage ? "down" : "poor";
    return when + ", " + state + " for " + length + ". " + blame + (evidence.empty() ? "." : ": " + evidence);
}

std::optional<std::size_t> OutagesPage::rowOf(std::size_t day) const {
    const Span span = days.at(day).summary.span;
    for (const auto kind : {Episode::Kind::outage, Episode::Kind::degradation}) {
        const auto found =
            std::ranges::find_if(rows, [&](const OutagesRow& row) { return touches(row, span, kind); });
        if (found != rows.end()) {
            return static_cast<std::size_t>(found - rows.begin());
        }
    }
    return std::nullopt;
}

Span outagesSpan(HistoryTime now, const UtcOffset& offset) {
    const std::chrono::sys_days today = localDay(now, offset);
    return {.from = spanOfDay(today - std::chrono::days(OutagesPage::dayCount - 1), offset).from, .to = now};
}

OutagesPage makeOutagesPage(const History& history, HistoryTime now, const UtcOffset& offset) {
    const std::chrono::sys_days today = localDay(now, offset);
    OutagesPage page;
    for (const DaySummary& summary :
         daySummaries(history, today - std::chrono::days(OutagesPage::dayCount - 1), today, offset)) {
        page.days.push_back(outagesDay(summary));
    }
    const Span span = outagesSpan(now, offset);
    for (const Episode& episode : std::views::reverse(history.episodes)) {
        if (spanOf(episode, history.until).overlaps(span)) {
            page.rows.push_back(outagesRow(episode, history, page.days, offset));
        }
    }
    return page;
}

std::vector<OutagesFigure> dayFigures(
    const History& history, const DaySummary& day, const UtcOffset& offset) {
    const Availability& times = day.availability;
    const PeriodFigures& pings = day.figures;
    const auto ofAnswers = [&pings](double ms) {
        return LocalText::milliseconds(pings.replied > 0 ? std::optional(ms) : std::nullopt);
    };
    return {
        {.name = "Availability", .value = LocalText::availability(times.percent())},
        {.name = "Down", .value = LocalText::length(times.down)},
        {.name = "Watched", .value = LocalText::length(times.watched)},
        {.name = "Not watched", .value = LocalText::length(times.notWatched)},
        {.name = "Asleep", .value = LocalText::length(times.asleep)},
        {.name = "Paused", .value = LocalText::length(times.paused)},
        {.name = "Packet loss", .value = shareOrUnknown(pings.lossPercent())},
        {.name = "Worst hour", .value = worstHourOf(history, day.span, offset)},
        {.name = "Median latency", .value = LocalText::milliseconds(pings.medianMs())},
        {.name = "95th percentile", .value = LocalText::milliseconds(pings.percentile95Ms())},
        {.name = "Slowest answer", .value = ofAnswers(pings.slowestMs)},
        {.name = "Jitter", .value = LocalText::milliseconds(pings.jitterMs())}};
}

std::string historyStatus(
    const History& history, const Span& span, const HistoryKeeping& keeping, const UtcOffset& offset) {
    const std::string host = Format::elided(keeping.host);
    const std::string reason = keeping.isOn ? keeping.problem : keepsNothing;
    if (const auto first = firstMoment(history)) {
        const bool isOlder = *first <= span.from;
        const std::string time = isOlder ? "the last " + std::to_string(OutagesPage::dayCount) + " days"
                                         : "known since " + LocalText::minute(*first, offset);
        return "Connection to " + host + ", " + time + "." + (reason.empty() ? "" : " " + reason);
    }
    return reason.empty() ? "Nothing is known of " + host + " yet. Its history has just begun." : reason;
}

} // namespace tarnwick
