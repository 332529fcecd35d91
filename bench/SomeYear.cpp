#include "bench/SomeYear.h"

#include <algorithm>
#include <random>
#include <vector>

namespace tarnwick {

namespace {

std::mt19937 sameNumbers() {
    return std::mt19937(15); // NOLINT(cert-msc51-cpp): the same every time
}

/// As many pings as the period has seconds, up to those of two minutes: then no bucket comes in addition.
PeriodFigures someFigures(std::mt19937& random, PeriodLength length) {
    const auto seconds = secondsIn(length).count();
    std::lognormal_distribution<double> latency(3.5, 0.6);
    PeriodFigures figures{.watchedSeconds = static_cast<double>(seconds), .sent = seconds};
    for (std::int64_t ping = 0; ping < std::min<std::int64_t>(seconds, 120); ++ping) {
        figures.addAnswer(latency(random));
    }
    return figures;
}

void addPeriods(std::vector<Period>& periods, std::mt19937& random, const Span& span, PeriodLength length) {
    for (HistoryTime start = span.from; start < span.to; start += secondsIn(length)) {
        periods.push_back({.start = start, .length = length, .figures = someFigures(random, length)});
    }
}

} // namespace

bool writeYear(SqliteJournal& journal, HistoryTime end, const std::string& host) {
    std::mt19937 random = sameNumbers();
    const HistoryTime from = end - benchYear.length();
    const HistoryTime minutesFrom = end - std::chrono::days(7);
    const HistoryTime quarterHoursFrom = end - std::chrono::days(90);
    Journal::Batch batch{.host = host, .until = end};
    addPeriods(batch.minutes, random, {from, quarterHoursFrom}, PeriodLength::hour);
    addPeriods(batch.minutes, random, {quarterHoursFrom, minutesFrom}, PeriodLength::quarterHour);
    addPeriods(batch.minutes, random, {minutesFrom, end}, PeriodLength::minute);
    for (HistoryTime start = from; start < end; start += std::chrono::minutes(144)) {
        batch.episodes.push_back({.start = start, .end = start + std::chrono::seconds(40)});
    }
    for (HistoryTime start = from; start < end; start += std::chrono::hours(6)) {
        const bool isSleep = batch.gaps.size() % 2 == 0;
        batch.gaps.push_back(
            {.kind = isSleep ? Gap::Kind::asleep : Gap::Kind::notRunning,
             .span = {.from = start, .to = start + std::chrono::minutes(20)}});
    }
    return journal.write(batch);
}

PeriodFigures someMinute() {
    std::mt19937 random = sameNumbers();
    return someFigures(random, PeriodLength::minute);
}

} // namespace tarnwick
