// The journal after a year: what opening it, writing a minute, a chart and a report cost.
#include "app/Reading/PastCharts.h"
#include "app/Report/Report.h"
#include "app/Report/ReportText.h"
#include "platform/journal/SqliteJournal.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>
#include <random>

namespace tarnwick {

namespace {

constexpr const char* benchHost = "one.example";
constexpr std::chrono::sys_days yearEnd{std::chrono::year(2026) / 1 / 1};
constexpr Span lastYear{.from = yearEnd - std::chrono::days(365), .to = yearEnd};

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

/// A week of minutes, 83 days of quarter hours, the rest of the year by hours; a day has ten outages and four
/// gaps.
void writeYear(SqliteJournal& journal) {
    std::mt19937 random(15); // NOLINT(cert-msc51-cpp): the same every time
    const HistoryTime minutesFrom = lastYear.to - std::chrono::days(7);
    const HistoryTime quarterHoursFrom = lastYear.to - std::chrono::days(90);
    Journal::Batch batch{.host = benchHost, .until = lastYear.to};
    addPeriods(batch.minutes, random, {lastYear.from, quarterHoursFrom}, PeriodLength::hour);
    addPeriods(batch.minutes, random, {quarterHoursFrom, minutesFrom}, PeriodLength::quarterHour);
    addPeriods(batch.minutes, random, {minutesFrom, lastYear.to}, PeriodLength::minute);
    for (HistoryTime start = lastYear.from; start < lastYear.to; start += std::chrono::minutes(144)) {
        batch.episodes.push_back({.start = start, .end = start + std::chrono::seconds(40)});
    }
    for (HistoryTime start = lastYear.from; start < lastYear.to; start += std::chrono::hours(6)) {
        const bool isSleep = batch.gaps.size() % 2 == 0;
        batch.gaps.push_back(
            {.kind = isSleep ? Gap::Kind::asleep : Gap::Kind::notRunning,
             .span = {.from = start, .to = start + std::chrono::minutes(20)}});
    }
    journal.write(batch);
}

void OpenJournal(benchmark::State& state) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "journal.sqlite";
    {
        SqliteJournal journal(file);
        writeYear(journal);
    }
    for ([[maybe_unused]] auto iteration : state) {
        SqliteJournal journal(file);
        if (journal.open() != Journal::State::writes) {
            state.SkipWithError("it does not open");
        }
    }
}

void WriteMinute(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SqliteJournal journal(folder.path() / "journal.sqlite");
    writeYear(journal);
    std::mt19937 random(15); // NOLINT(cert-msc51-cpp): the same every time
    Journal::Batch batch{.host = benchHost, .minutes = {{.start = lastYear.to}}};
    batch.minutes[0].figures = someFigures(random, PeriodLength::minute);
    for ([[maybe_unused]] auto iteration : state) {
        batch.minutes[0].start += std::chrono::minutes(1);
        batch.until = batch.minutes[0].span().to;
        if (!journal.write(batch)) {
            state.SkipWithError("it is not written");
        }
    }
}

void ReportOfAYear(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SqliteJournal journal(folder.path() / "journal.sqlite");
    writeYear(journal);
    const UtcOffset utc = [](HistoryTime) { return std::chrono::seconds(0); };
    for ([[maybe_unused]] auto iteration : state) {
        const History history = journal.read(benchHost, lastYear);
        benchmark::DoNotOptimize(reportText(makeReport(history, benchHost, lastYear, utc), utc));
    }
}

/// With the read, as the drop-down does it once a minute while it shows that span.
void ChartOf(benchmark::State& state, HistoryChart::Reach reach) {
    const test::TemporaryFolder folder;
    SqliteJournal journal(folder.path() / "journal.sqlite");
    writeYear(journal);
    PastCharts past(
        {.read = [&](const Span& span) { return journal.read(benchHost, span); },
         .whyEmpty = [] { return ""; }});
    past.choose(reach);
    HistoryTime now = lastYear.to - std::chrono::hours(1);
    for ([[maybe_unused]] auto iteration : state) {
        now += std::chrono::minutes(1); // else the last one is shown again
        benchmark::DoNotOptimize(past.chart(73, {}, now).columns.data());
    }
}

void ChartOfADay(benchmark::State& state) {
    ChartOf(state, HistoryChart::Reach::day);
}

void ChartOfAWeek(benchmark::State& state) {
    ChartOf(state, HistoryChart::Reach::week);
}

BENCHMARK(OpenJournal)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteMinute)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChartOfADay)->Unit(benchmark::kMillisecond);
BENCHMARK(ChartOfAWeek)->Unit(benchmark::kMillisecond);
BENCHMARK(ReportOfAYear)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace tarnwick
