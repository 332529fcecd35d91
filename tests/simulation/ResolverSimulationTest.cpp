// A resolver that hangs for minutes or fails for hours: lookups do not pile up, and the monitor stays alive.
#include "core/Pinger/SystemPingNetwork.h"

#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;

class ResolverSimulationTest : public testing::Test, protected MonitorWorld {
protected:
    /// When, in seconds since the start, a lookup was asked for; the one of the start is left out.
    std::vector<double> lookupTimes(int seconds) {
        std::vector<double> times;
        for (int second = 0; second < seconds; ++second) {
            const int before = restarts();
            pass(1);
            if (restarts() != before) {
                times.push_back(loop.now() - startedAt);
            }
        }
        return times;
    }
};

TEST_F(ResolverSimulationTest, ALookupThatHangsIsRetriedWithBackOff) {
    network.setHangingHost(host);
    start();

    EXPECT_THAT(lookupTimes(120), ElementsAre(18, 43, 68, 93, 118));
}

TEST_F(ResolverSimulationTest, AHostThatIsUnknownIsRetriedWithinTheGraceAndThenWithBackOff) {
    setUnknownHost(host);
    start();

    EXPECT_THAT(lookupTimes(70), ElementsAre(2, 4, 6, 8, 10, 18, 33, 48, 63));
}

TEST_F(ResolverSimulationTest, ANetworkChangeBreaksTheWaitForTheNextLookup) {
    setUnknownHost(host);
    start();
    path.report(true, {"eth0"});
    pass(50);
    setHost(host, {host});

    path.report(true, {"wlan0"});
    pass(1.5);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

TEST_F(ResolverSimulationTest, AResolverThatComesBackEndsTheOutageAtTheNextRetry) {
    setUnknownHost(host);
    start();
    pass(3600);
    setHost(host, {host}, 3);

    pass(20);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_EQ(monitor->reading().startError, std::nullopt);
}

TEST_F(ResolverSimulationTest, EveryTickRunsWhileALookupHangs) {
    network.setHangingHost(host);
    start();
    int ticks = 0;
    monitor->onTick = [&](double /*now*/) { ++ticks; };

    pass(600);

    EXPECT_EQ(ticks, 600);
}

/// The real bookkeeping of lookups in flight, on detached work that hangs.
class LookupsInFlightTest : public ResolverSimulationTest {
protected:
    LookupsInFlightTest() {
        defaults.put(PreferenceKey::hostname, std::string("host.test"));
        loop.holdDetachedWork();
        create();
        monitor = std::make_unique<Monitor>(
            *prefs, MonitorEnvironment{loop, systemNetwork, path, sleep, notifications, store()});
        startedAt = loop.now();
        monitor->start();
    }

    ~LookupsInFlightTest() override { kill(); }

    int resolverCalls = 0;
    SystemPingNetwork systemNetwork{loop, [this](const std::string&) -> Resolution {
                                        ++resolverCalls;
                                        return PingError::resolution("Temporary failure in name resolution");
                                    }};
};

TEST_F(LookupsInFlightTest, LookupsThatHangDoNotPileUp) {
    for (int minute = 0; minute < 60; ++minute) {
        pass(60);
        ASSERT_EQ(loop.heldWork(), 3U);
    }

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
    EXPECT_EQ(monitor->reading().startError, PingError::resolution("lookup timed out"));
}

TEST_F(LookupsInFlightTest, ARetryHasALookupOfItsOwn) {
    pass(20); // the first retry was at 18 s
    EXPECT_EQ(loop.heldWork(), 2U);
    loop.releaseDetachedWork();
    loop.runPending();

    EXPECT_EQ(resolverCalls, 2);
    EXPECT_EQ(monitor->reading().startError, PingError::resolution("Temporary failure in name resolution"));
}

TEST_F(LookupsInFlightTest, AnEndBetweenTwoRetriesTellsNothingToAnybody) {
    pass(12); // given up, and the first retry is yet to come
    loop.releaseDetachedWork();
    loop.runPending();

    EXPECT_EQ(resolverCalls, 1);
    EXPECT_EQ(monitor->reading().startError, PingError::resolution("lookup timed out"));
}

TEST_F(LookupsInFlightTest, AMonitorThatIsGoneHearsNothingOfTheEnd) {
    pass(5);
    kill();

    loop.releaseDetachedWork();
    loop.runPending();

    EXPECT_EQ(resolverCalls, 1);
    EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(LookupsInFlightTest, AnotherHostIsLookedUpAtOnceBesideTheOneThatHangs) {
    pass(5);

    monitor->setHostname("other.test");

    EXPECT_EQ(loop.heldWork(), 2U);
}

} // namespace

} // namespace tarnwick::simulation
