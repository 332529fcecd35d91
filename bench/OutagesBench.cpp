// The outages window over a year's journal: what opening it, reading again and choosing a day cost the main
// thread.
#include "app/App/OutagesWindow.h"
#include "bench/SomeYear.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QTest>

#include <benchmark/benchmark.h>
#include <memory>

namespace tarnwick {

namespace {

/// A window over a year's journal, not yet made.
class OutagesOfAYear {
public:
    OutagesOfAYear() {
        writeYear(journal_, benchYear.to);
        loop_.setWallClock(benchYear.to);
        reading_.set({.host = benchHost, .chart = {.lowThresholdMs = 100, .highThresholdMs = 1000}});
    }

    [[nodiscard]] std::unique_ptr<OutagesWindow> make() {
        return std::make_unique<OutagesWindow>(
            OutagesModel::Needs{
                .loop = loop_,
                .reading = reading_,
                .keepsHistory = [] { return true; },
                .read = [this](const Span& span) { return journal_.read(benchHost, span); },
                .version = "1.2",
                .offset = [](HistoryTime) { return std::chrono::seconds(0); }},
            menu_.menu);
    }

    /// Until it is drawn.
    static void show(OutagesWindow& window) {
        window.present();
        QApplication::processEvents();
    }

    void passAMinute() {
        loop_.advance(61);
        QApplication::processEvents();
    }

private:
    test::TemporaryFolder folder_;
    SqliteJournal journal_{folder_.path() / "journal.sqlite"};
    simulation::VirtualRunLoop loop_;
    Observed<Reading> reading_;
    test::StandardMenu menu_;
};

void OpenOutages(benchmark::State& state) {
    OutagesOfAYear year;
    for ([[maybe_unused]] auto iteration : state) {
        const auto window = year.make();
        OutagesOfAYear::show(*window);
        state.PauseTiming();
        window->close();
        state.ResumeTiming();
    }
}

void OpenOutagesAgain(benchmark::State& state) {
    OutagesOfAYear year;
    const auto window = year.make();
    for ([[maybe_unused]] auto iteration : state) {
        OutagesOfAYear::show(*window);
        state.PauseTiming();
        window->close();
        state.ResumeTiming();
    }
}

void RereadOutages(benchmark::State& state) {
    OutagesOfAYear year;
    const auto window = year.make();
    OutagesOfAYear::show(*window);
    for ([[maybe_unused]] auto iteration : state) {
        year.passAMinute();
    }
}

void ChooseADay(benchmark::State& state) {
    OutagesOfAYear year;
    const auto window = year.make();
    OutagesOfAYear::show(*window);
    Qt::Key key = Qt::Key_Left;
    for ([[maybe_unused]] auto iteration : state) {
        QTest::keyClick(QApplication::focusWidget(), key);
        QApplication::processEvents();
        key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
    }
}

BENCHMARK(OpenOutages)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenOutagesAgain)->Unit(benchmark::kMillisecond);
BENCHMARK(RereadOutages)->Unit(benchmark::kMillisecond);
BENCHMARK(ChooseADay)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace tarnwick

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "default.warning=false"); // of what a window without a display can't do
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
