// Hours of pinging: the send times keep their grid through lateness, stops and a wall clock that is set.
#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>
#include <random>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;

constexpr double hour = 3600;

class LongRunSimulationTest : public testing::Test, protected MonitorWorld {
protected:
    /// Moves the wall clock by `seconds`.
    void setWallClockBy(int seconds) { loop.setWallClock(loop.wallNow() + std::chrono::seconds(seconds)); }

    [[nodiscard]] const StatCounter& session() const { return monitor->reading().session; }
};

TEST_F(LongRunSimulationTest, HoursOfPingsGoOutWithoutDrift) {
    start();

    pass(4 * hour);

    const std::vector<double> times = sendTimes();
    ASSERT_EQ(times.size(), 14401U);
    for (std::size_t i = 0; i < times.size(); ++i) {
        ASSERT_EQ(times[i], static_cast<double>(i));
    }
}

TEST_F(LongRunSimulationTest, LatenessOfOnePingNeverAddsToTheNext) {
    constexpr double longest = 0.3;
    start();
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> busyFor(0, longest);
    monitor->onTick = [&](double /*now*/) { loop.stall(busyFor(random)); };

    pass(4 * hour);

    const std::vector<double> times = sendTimes();
    ASSERT_EQ(times.size(), 14401U);
    for (std::size_t i = 0; i < times.size(); ++i) {
        ASSERT_GE(times[i], static_cast<double>(i));
        ASSERT_LE(times[i], static_cast<double>(i) + longest);
    }
}

TEST_F(LongRunSimulationTest, NothingGrowsFromHourToHour) {
    start();
    pass(hour + 0.5);
    const std::size_t timers = loop.timerCount();

    pass(3 * hour);

    EXPECT_EQ(loop.timerCount(), timers);
    EXPECT_EQ(network.openSockets(), 1U);
    EXPECT_EQ(monitor->reading().samples, 301U);
    EXPECT_EQ(monitor->measured().ledger.bookings(), 0U);
}

TEST_F(LongRunSimulationTest, HoursOfSteadyAnswersAreCountedToTheLastOne) {
    start();

    pass(4 * hour + 0.5);

    EXPECT_EQ(session(), (StatCounter{14401, 14401, 0, 31.25, 31.25, 31.25}));
    EXPECT_EQ(restarts(), 1);
}

TEST_F(LongRunSimulationTest, HoursOfRegularLossAreCountedToTheLastOne) {
    network.setBehavior([count = 0](const SentRequest&) mutable {
        return Answer{.delay = usualDelay, .copies = ++count % 5 == 0 ? 0 : 1};
    });
    start();

    pass(4 * hour + 0.5);
    const StatCounter now = session();

    EXPECT_EQ(now.sent, 14401);
    EXPECT_EQ(now.replied, 11521);
    EXPECT_EQ(now.lost, 2879); // the latest one is not yet given up
    EXPECT_EQ(restarts(), 1);
}

TEST_F(LongRunSimulationTest, AProcessThatWasStoppedSendsNoBurst) {
    start();
    pass(10.5);
    const std::size_t before = network.sent().size();

    loop.stall(60);
    pass(3);

    const std::vector<double> times = sendTimes();
    ASSERT_GE(times.size(), before + 3);
    EXPECT_LE(times.size(), before + 4);
    EXPECT_EQ(times[before], 70.5);
    for (std::size_t i = before + 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 0.5);
    }
}

TEST_F(LongRunSimulationTest, AProcessThatWasStoppedBrieflyKeepsItsGrid) {
    start();
    pass(10.5);

    loop.stall(5);
    passUntil(18);

    const std::vector<double> times = sendTimes();
    EXPECT_THAT((std::vector(times.begin() + 11, times.end())), ElementsAre(15.5, 16, 17, 18));
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

TEST_F(LongRunSimulationTest, AProcessThatWasStoppedIsSoonUpAgain) {
    start();
    pass(10.5);

    loop.stall(600);
    pass(2);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

class WallClockTest : public LongRunSimulationTest, public testing::WithParamInterface<int> {};

TEST_P(WallClockTest, SettingItStopsNeitherPingingNorJudging) {
    start();
    pass(100);

    setWallClockBy(GetParam());
    pass(100.5);

    const std::vector<double> times = sendTimes();
    ASSERT_EQ(times.size(), 201U);
    EXPECT_EQ(times.back(), 200);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_EQ(session().replied, 201);
    EXPECT_EQ(session().lost, 0);
    EXPECT_EQ(session().slowestMs, 31.25);
    EXPECT_EQ(restarts(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    LongRunSimulationTest, WallClockTest, testing::Values(-3600, 3600),
    [](const auto& instance) { return instance.param < 0 ? "AnHourBack" : "AnHourForward"; });

TEST_F(LongRunSimulationTest, AWallClockSetForwardEmptiesTheChartOfWhatIsOldNow) {
    start();
    pass(100);

    setWallClockBy(3600);
    pass(10);

    EXPECT_EQ(monitor->reading().samples, 10U);
}

TEST_F(LongRunSimulationTest, AWallClockSetBackLeavesTheChartBounded) {
    start();
    pass(400);

    setWallClockBy(-3600);
    pass(1.5 * hour);

    EXPECT_EQ(monitor->reading().samples, 301U);
}

} // namespace

} // namespace tarnwick::simulation
