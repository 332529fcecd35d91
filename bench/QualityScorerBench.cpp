// The judging of a whole window, as every tick does it.
#include "core/QualityScorer.h"

#include <benchmark/benchmark.h>

namespace tarnwick {

namespace {

constexpr double slowPingMs = 150;
constexpr double timeout = 3;
constexpr double pingInterval = 1;
constexpr double roundTrip = 0.04;
constexpr int everyLost = 10;

/// One ping a second; every tenth is lost, and was found so before.
std::vector<PendingPing> window(int pings) {
    std::vector<PendingPing> result;
    for (int index = 0; index < pings; ++index) {
        PendingPing ping{.id = static_cast<std::uint64_t>(index), .sent = index * pingInterval};
        if (index % everyLost == 0) {
            ping.lost = true;
        } else {
            ping.reply = ping.sent + roundTrip;
        }
        result.push_back(ping);
    }
    return result;
}

/// Work per iteration: one evaluation of a window with as many pings as the name says; none leaves it.
void EvaluateWindow(benchmark::State& state) {
    const auto pings = static_cast<int>(state.range(0));
    ScoringConfig config = ScoringConfig::original(slowPingMs, timeout, pingInterval);
    config.averageOver = pings * pingInterval + timeout;
    std::vector<PendingPing> pending = window(pings);
    const double now = (pings - 1) * pingInterval + timeout / 2;
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(QualityScorer::evaluate(pending, now, config));
    }
    if (pending.size() != static_cast<std::size_t>(pings)) {
        state.SkipWithError("pings left the window");
    }
    state.counters["pings"] = pings;
}

BENCHMARK(EvaluateWindow)->Arg(30)->Arg(300)->Arg(600);

} // namespace

} // namespace tarnwick
