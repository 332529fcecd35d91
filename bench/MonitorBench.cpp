// The whole model in virtual time, without a network: what a second of watching costs.
#include "tests/simulation/MonitorWorld.h"

#include <benchmark/benchmark.h>
#include <chrono>

namespace tarnwick {

namespace {

using simulation::MonitorWorld;

/// Pings go out at half seconds after the start, so that they and the ticks at whole seconds can be told
/// apart.
constexpr double lookupTime = 0.5;
/// The chart's five minutes are full.
constexpr double warmUp = 600;
/// Around an event, on both sides; nothing else happens within it.
constexpr double margin = 0.01;

void startSteadily(MonitorWorld& world) {
    world.setHost(MonitorWorld::host, {MonitorWorld::host}, lookupTime);
    world.start();
    world.passUntil(warmUp);
}

/// Times only what happens around each `eventTime` after a whole second.
void measureEvent(benchmark::State& state, double eventTime) {
    MonitorWorld world;
    startSteadily(world);
    double second = warmUp;
    for ([[maybe_unused]] auto iteration : state) {
        second += 1;
        world.passUntil(second + eventTime - margin);
        const auto before = std::chrono::steady_clock::now();
        world.passUntil(second + eventTime + margin);
        const auto after = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(after - before).count());
    }
    if (world.monitor->reading().status != Monitor::Status::up) {
        state.SkipWithError("the connection is not up");
    }
}

/// Work per iteration: one tick with 30 pings in the window and 300 in the chart; every 20th stores the
/// statistics.
void OneTick(benchmark::State& state) {
    measureEvent(state, 0);
}

/// Work per iteration: one reply from the virtual socket through pinger, monitor, watchdog and ledger.
void OneReply(benchmark::State& state) {
    measureEvent(state, lookupTime + MonitorWorld::usualDelay);
}

/// Work per iteration: one request from the ping timer through monitor, ledger and pinger to the virtual
/// socket.
void OneRequest(benchmark::State& state) {
    measureEvent(state, lookupTime);
}

/// Work per iteration: all of a second, so one request, one reply and one tick.
void OneSecond(benchmark::State& state) {
    MonitorWorld world;
    startSteadily(world);
    for ([[maybe_unused]] auto iteration : state) {
        world.pass(1);
    }
    if (world.monitor->reading().status != Monitor::Status::up) {
        state.SkipWithError("the connection is not up");
    }
}

BENCHMARK(OneTick)->UseManualTime();
BENCHMARK(OneReply)->UseManualTime();
BENCHMARK(OneRequest)->UseManualTime();
BENCHMARK(OneSecond);

} // namespace

} // namespace tarnwick
