// The journal after a year: what opening it, writing a minute, a chart and a report cost.
#include "app/Reading/PastCharts.h"
#include "app/Report/Report.h"
#include "app/Report/ReportText.h"
#include "bench/SomeYear.h"
#include "platform/journal/SqliteJournal.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

namespace tarnwick {

namespace {

void OpenJournal(benchmark::State& state) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "journal.sqlite";
    {
        SqliteJournal journal(file);
        writeYear(journal, benchYear.to);
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
    writeYear(journal, benchYear.to);
    Journal::Batch batch{.host = benchHost, .minutes = {{.start = benchYear.to}}};
    batch.minutes[0].figures = someMinute();
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
    writeYear(journal, benchYear.to);
    const UtcOffset utc = [](HistoryTime) { return std::chrono::seconds(0); };
    for ([[maybe_unused]] auto iteration : state) {
        const History history = journal.read(benchHost, benchYear);
        benchmark::DoNotOptimize(reportText(makeReport(history, benchHost, benchYear, utc), utc));
    }
}

/// With the read, as the drop-down does it once a minute while it shows that span.
void ChartOf(benchmark::State& state, HistoryChart::Reach reach) {
    const test::TemporaryFolder folder;
    SqliteJournal journal(folder.path() / "journal.sqlite");
    writeYear(journal, benchYear.to);
    PastCharts past(
        {.read = [&](const Span& span) { return journal.read(benchHost, span); },
         .whyEmpty = [] { return ""; }});
    past.choose(reach);
    HistoryTime now = benchYear.to - std::chrono::hours(1);
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
