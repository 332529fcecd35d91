#include "app/Reading/HistoryChart.h"

#include "app/Reading/Format.h"
#include "core/History/CalendarNames.h"
#include "core/History/Spans.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnwick::HistoryChart {

namespace {

using LatencyChart::BarTone;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// Lengths of a part, the shortest first.
std::vector<seconds> partsOf(Reach reach) {
    switch (reach) {
    case Reach::fiveMinutes:
    case Reach::hour:
        break;
    case Reach::day:
        return {minutes(15), minutes(20), minutes(30), hours(1), hours(2)};
    case Reach::week:
        return {hours(1), hours(2), hours(3), hours(4), hours(6), hours(12)};
    }
    return {minutes(1), minutes(2), minutes(5), minutes(10)};
}

seconds lengthOfReach(Reach reach) {
    switch (reach) {
    case Reach::fiveMinutes:
        return minutes(5);
    case Reach::hour:
        break;
    case Reach::day:
        return days(1);
    case Reach::week:
        return days(7);
    }
    return hours(1);
}

std::string twoPlaces(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

/// "14:05" of a local time.
std::string hourAndMinute(HistoryTime local) {
    const std::chrono::hh_mm_ss clock(local - std::chrono::floor<days>(local));
    return twoPlaces(clock.hours().count()) + ":" + twoPlaces(clock.minutes().count());
}

/// "Tue" of a local time.
std::string weekdayOf(HistoryTime local) {
    return std::string(CalendarNames::shortOf(std::chrono::weekday(std::chrono::floor<days>(local))));
}

/// "Tue 14:05 to 14:20", "Tue 21:00 to 24:00", "Tue 21:00 to Wed 03:00".
std::string timeText(const Span& span, const UtcOffset& offset) {
    const HistoryTime from = localTime(span.from, offset);
    const HistoryTime to = localTime(span.to, offset);
    const auto nextDay = std::chrono::floor<days>(from) + days(1);
    std::string end = hourAndMinute(to);
    if (to == nextDay) {
        end = "24:00";
    } else if (to > nextDay) {
        end = weekdayOf(to) + " " + end;
    }
    return weekdayOf(from) + " " + hourAndMinute(from) + " to " + end;
}

/// "42 s", "3 min", "1 h 20 min".
std::string roughLength(seconds length) {
    if (length < minutes(1)) {
        return std::to_string(length.count()) + " s";
    }
    const auto whole = std::chrono::round<minutes>(length).count();
    if (whole < 60) {
        return std::to_string(whole) + " min";
    }
    const std::string rest = whole % 60 > 0 ? " " + std::to_string(whole % 60) + " min" : "";
    return std::to_string(whole / 60) + " h" + rest;
}

/// "2% lost": never none of some, nor all of not all.
std::string lossText(double share) {
    if (share <= 0) {
        return "no loss";
    }
    if (share < 0.01) {
        return "under 1% lost";
    }
    return Text::whole(share < 1 ? std::min(std::round(100 * share), 99.0) : 100) + "% lost";
}

std::string nameOf(Gap::Kind kind) {
    switch (kind) {
    case Gap::Kind::asleep:
        return "computer asleep";
    case Gap::Kind::notRunning:
        return "Tarnwick not running";
    case Gap::Kind::paused:
        break;
    }
    return "paused";
}

void append(std::string& list, const std::string& item) {
    list += list.empty() ? item : ", " + item;
}

/// `state` if it lasted all of the time, "state for 3 min" for a part of it.
void appendState(std::string& list, const std::string& state, seconds length, const Span& whole) {
    if (length >= whole.length()) {
        append(list, state);
    } else if (length > seconds(0)) {
        append(list, state + " for " + roughLength(length));
    }
}

std::string figuresText(const History& history, const HistoryBucket& bucket) {
    // The last one is not over.
    const Span known = common(bucket.span, {.from = bucket.span.from, .to = history.until});
    if (known.isEmpty()) {
        return "no data";
    }
    std::string text;
    appendState(text, "down", lengthOf(episodeSpansIn(history, known, Episode::Kind::outage)), known);
    if (bucket.slowestMs) {
        append(text, "slowest " + Format::wholeMs(*bucket.slowestMs));
    }
    if (bucket.slowestMs || bucket.lossShare > 0) {
        append(text, lossText(bucket.lossShare));
    }
    for (const Gap::Kind kind : {Gap::Kind::asleep, Gap::Kind::notRunning, Gap::Kind::paused}) {
        appendState(text, nameOf(kind), lengthOf(gapsIn(history, known, kind)), known);
    }
    return text.empty() ? "no data" : text;
}

BarTone toneOf(const HistoryBucket& bucket, const Thresholds& thresholds) {
    if (bucket.isDown) {
        return BarTone::outage;
    }
    // The loss has a mark of its own.
    const bool isSilent = !bucket.slowestMs && bucket.lossShare > 0;
    const LatencyChart::Chart scale{.lowThresholdMs = thresholds.lowMs, .highThresholdMs = thresholds.highMs};
    return scale.tone({.worstRtt = bucket.slowestMs, .lost = isSilent});
}

/// The shortest step on the clock that gives no more than a few labels.
seconds labelStep(const Span& span) {
    constexpr int mostLabels = 7;
    for (const seconds step :
         {seconds(minutes(1)), seconds(minutes(5)), seconds(minutes(10)), seconds(minutes(15)),
          seconds(minutes(30)), seconds(hours(1)), seconds(hours(2)), seconds(hours(3)), seconds(hours(4)),
          seconds(hours(6)), seconds(hours(12)), seconds(days(1))}) {
        if (span.length() <= mostLabels * step) {
            return step;
        }
    }
    return days(7);
}

std::vector<TimeLabel> timeLabelsOf(const Span& span, const UtcOffset& offset) {
    std::vector<TimeLabel> labels;
    if (span.isEmpty()) {
        return labels;
    }
    const seconds step = labelStep(span);
    const HistoryTime end = localTime(span.to, offset);
    for (HistoryTime local = floorTo(localTime(span.from, offset), step); local <= end; local += step) {
        const HistoryTime nearby = local - offset(span.from);
        const HistoryTime time = local - offset(nearby); // the clock may have been changed in between
        if (time >= span.from && time < span.to) {
            const std::chrono::duration<double> sinceStart = time - span.from;
            labels.push_back(
                {.position = sinceStart / span.length(),
                 .text = step >= days(1) ? weekdayOf(local) : hourAndMinute(local)});
        }
    }
    return labels;
}

std::string figuresOfAll(const History& history, const Span& span) {
    const PeriodFigures figures = figuresIn(history, span);
    std::string text;
    if (const auto median = figures.medianMs()) {
        text = "median " + Text::whole(*median) + " milliseconds, slowest " + Text::whole(figures.slowestMs)
               + " milliseconds";
    }
    if (const auto loss = figures.lossPercent()) {
        append(text, lossText(*loss / 100));
    }
    const seconds down = lengthOf(episodeSpansIn(history, span, Episode::Kind::outage));
    if (down > seconds(0)) {
        append(text, "down for " + roughLength(down));
    }
    return text;
}

} // namespace

std::string nameOf(Reach reach) {
    switch (reach) {
    case Reach::fiveMinutes:
        break;
    case Reach::hour:
        return "1 hour";
    case Reach::day:
        return "1 day";
    case Reach::week:
        return "1 week";
    }
    return "5 min";
}

std::string titleOf(Reach reach) {
    switch (reach) {
    case Reach::fiveMinutes:
        break;
    case Reach::hour:
        return "Last hour";
    case Reach::day:
        return "Last 24 hours";
    case Reach::week:
        return "Last 7 days";
    }
    return LatencyChart::periodText;
}

Division divisionOf(Reach reach, HistoryTime now, int most, const UtcOffset& offset) {
    const seconds whole = lengthOfReach(reach);
    const std::vector<seconds> choices = partsOf(reach);
    const auto chosen = std::ranges::find_if(choices, [&](seconds part) { return whole / part <= most; });
    const seconds part = chosen != choices.end() ? *chosen : choices.back();
    const HistoryTime local = localTime(now, offset);
    const HistoryTime end = now + (floorTo(local, part) + part - local);
    return {.span = {.from = end - whole, .to = end}, .parts = static_cast<int>(whole / part)};
}

bool Column::isGap() const {
    const bool isAllKnown = !slowestMs && lossShare <= 0 && !isWall();
    return gapShare >= 0.5 || (gapShare > 0 && isAllKnown);
}

double Chart::scaleMax() const {
    std::vector<double> latencies;
    for (const Column& column : columns) {
        if (column.slowestMs) {
            latencies.push_back(*column.slowestMs);
        }
    }
    return LatencyChart::scaleMax(std::move(latencies), thresholds.lowMs);
}

std::string Chart::thresholdText() const {
    return LatencyChart::Chart{.lowThresholdMs = thresholds.lowMs}.thresholdText();
}

bool Chart::isEmpty() const {
    return std::ranges::all_of(
        columns, [](const Column& column) { return column.tone == BarTone::none && column.gapShare <= 0; });
}

std::string Chart::summary() const {
    std::string text = title;
    append(text, isEmpty() && !whyEmpty.empty() ? whyEmpty : figures);
    return text;
}

Chart chartOf(
    const History& history, const Division& division, const Thresholds& thresholds, const UtcOffset& offset) {
    Chart chart{
        .timeLabels = timeLabelsOf(division.span, offset),
        .thresholds = thresholds,
        .figures = figuresOfAll(history, division.span)};
    for (const HistoryBucket& bucket : chartBuckets(history, division.span, division.parts)) {
        chart.columns.push_back(
            {.span = bucket.span,
             .slowestMs = bucket.slowestMs,
             .lossShare = bucket.lossShare,
             .gapShare = bucket.gapShare,
             .tone = toneOf(bucket, thresholds),
             .time = timeText(bucket.span, offset),
             .figures = figuresText(history, bucket)});
    }
    return chart;
}

} // namespace tarnwick::HistoryChart
