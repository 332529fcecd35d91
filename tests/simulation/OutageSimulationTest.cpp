// Outages, recoveries, changes of the path, and addresses that fall silent, over hours.
#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>

#include <span>

namespace tarnwick::simulation {

namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class OutageSimulationTest : public testing::Test, protected MonitorWorld {
protected:
    /// When, in seconds since the start, the pinger is restarted within the next `seconds`.
    std::vector<double> restartTimes(int seconds) {
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

    void useTwofoldHost() {
        defaults.put(PreferenceKey::hostname, std::string("twofold.test"));
        setHost("twofold.test", {"192.0.2.1", "192.0.2.2"});
    }

    void useFivefoldHost() {
        defaults.put(PreferenceKey::hostname, std::string("fivefold.test"));
        setHost("fivefold.test", fivefold);
    }

    const std::vector<std::string> fivefold{"192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4", "192.0.2.5"};

    /// Only this address answers.
    void letOnly(const std::string& address) {
        network.setBehavior([address](const SentRequest& request) {
            return Answer{.delay = usualDelay, .copies = request.address == address ? 1 : 0};
        });
    }
};

TEST_F(OutageSimulationTest, IsDownAtTheFirstTickAfterTheReplyTimeout) {
    start();
    pass(10.5);
    fallSilent();

    passUntil(18.5);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    passUntil(19);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(OutageSimulationTest, SilenceOfExactlyTheReplyTimeoutIsNotYetAnOutage) {
    fallSilent();
    start();

    pass(8);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
    pass(1);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(OutageSimulationTest, ThePingerIsRestartedWithBackOffWhileDown) {
    start();
    pass(10);
    fallSilent();

    EXPECT_THAT(restartTimes(70), ElementsAre(19, 34, 49, 64, 79));
}

TEST_F(OutageSimulationTest, WithALongIntervalTheBackOffReachesTheInterval) {
    defaults.put(PreferenceKey::pingInterval, 30.0);
    fallSilent();
    start();

    EXPECT_THAT(restartTimes(170), ElementsAre(65, 95, 125, 155));
}

TEST_F(OutageSimulationTest, ARecoveryEndsTheRestarts) {
    start();
    pass(10);
    fallSilent();
    pass(30);
    answerAfter(usualDelay);

    pass(2);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);

    EXPECT_THAT(restartTimes(1800), IsEmpty());
}

TEST_F(OutageSimulationTest, ADayOfOutagesIsAnnouncedInPairs) {
    defaults.put(PreferenceKey::showNotifications, true);
    start();

    for (int outage = 0; outage < 24; ++outage) {
        answerAfter(usualDelay);
        pass(300);
        fallSilent();
        pass(120);
    }

    const auto& posted = notifications.posted();
    ASSERT_THAT(posted, SizeIs(47));
    for (std::size_t i = 0; i < posted.size(); ++i) {
        EXPECT_EQ(
            posted[i].title, i % 2 == 0 ? "Tarnwick — Connection down" : "Tarnwick — Connection restored");
    }
}

TEST_F(OutageSimulationTest, AnOutageCostsFewCountedPings) {
    start();
    pass(100);
    fallSilent();
    pass(1800);
    answerAfter(usualDelay);
    pass(100);

    EXPECT_LE(monitor->reading().session.lost, 9);
    EXPECT_GE(monitor->reading().session.replied, 195);
}

// A name with several addresses.

TEST_F(OutageSimulationTest, ASilentFirstAddressIsLeftBeforeTheConnectionCountsAsDown) {
    useTwofoldHost();
    letOnly("192.0.2.2");
    start();
    std::vector<Monitor::Status> statuses;
    monitor->onTick = [&](double /*now*/) { statuses.push_back(monitor->reading().status); };

    pass(1800);

    EXPECT_THAT(statuses, Each(AnyOf(Monitor::Status::starting, Monitor::Status::up)));
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_EQ(monitor->reading().resolvedAddress, "192.0.2.2");
    EXPECT_EQ(restarts(), 1);
}

TEST_F(OutageSimulationTest, FiveUnansweredPingsDecideForTheNextAddress) {
    useTwofoldHost();
    letOnly("192.0.2.2");
    start();

    pass(20);

    EXPECT_EQ(network.sent()[4].address, "192.0.2.1");
    for (std::size_t i = 5; i < network.sent().size(); ++i) {
        EXPECT_EQ(network.sent()[i].address, "192.0.2.2");
    }
}

TEST_F(OutageSimulationTest, AddressesThatTakeTurnsInFallingSilentKeepTheConnectionUp) {
    useTwofoldHost();
    letOnly("192.0.2.1");
    start();
    pass(60);
    std::vector<Monitor::Status> statuses;
    monitor->onTick = [&](double /*now*/) { statuses.push_back(monitor->reading().status); };

    for (int turn = 0; turn < 50; ++turn) {
        letOnly(turn % 2 == 0 ? "192.0.2.2" : "192.0.2.1");
        pass(60);
    }

    EXPECT_THAT(statuses, Each(Monitor::Status::up));
    EXPECT_EQ(restarts(), 1);
}

TEST_F(OutageSimulationTest, SendsThatFailMoveOnToTheNextAddress) {
    useTwofoldHost();
    start();
    pass(10.5);

    network.setSendFails(true);
    pass(1);
    network.setSendFails(false);

    EXPECT_EQ(monitor->reading().resolvedAddress, "192.0.2.2");
}

TEST_F(OutageSimulationTest, EveryAddressHasItsTurnAcrossRestarts) {
    useFivefoldHost();
    for (const std::string& one : fivefold) {
        letOnly(one);
        start();
        pass(60);

        EXPECT_EQ(monitor->reading().status, Monitor::Status::up) << one;
        EXPECT_EQ(monitor->reading().resolvedAddress, one);
        kill();
    }
}

TEST_F(OutageSimulationTest, ARestartKeepsTheAddressThatAnswers) {
    useFivefoldHost();
    letOnly(fivefold[3]);
    start();
    path.report(true, {"eth0"});
    pass(60);
    const std::size_t before = network.sent().size();

    path.report(true, {"wlan0"});
    pass(10);
    sleep.goToSleep();
    sleep.wake();
    pass(10);

    EXPECT_GE(restarts(), 4);
    const std::span<const SentRequest> since = std::span(network.sent()).subspan(before);
    EXPECT_THAT(since, SizeIs(testing::Ge(15U)));
    EXPECT_THAT(since, Each(testing::Field(&SentRequest::address, fivefold[3])));
}

TEST_F(OutageSimulationTest, AnotherHostBeginsWithItsFirstAddress) {
    useFivefoldHost();
    setHost("other.test", fivefold);
    letOnly(fivefold[3]);
    start();
    pass(60);

    monitor->setHostname("other.test");
    pass(1);

    EXPECT_EQ(monitor->reading().resolvedAddress, fivefold[0]);
}

// The path.

TEST_F(OutageSimulationTest, ABurstOfAHundredPathChangesCostsOneRestart) {
    start();
    path.report(true, {"eth0"});
    pass(10);

    for (int change = 0; change < 100; ++change) {
        path.report(change % 2 == 0, {"wlan0"});
        pass(0.0625);
    }
    pass(60);

    EXPECT_EQ(restarts(), 2);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

TEST_F(OutageSimulationTest, APathThatNeverRestsIsRestartedAtMostEveryTwoSeconds) {
    start();
    path.report(true, {"eth0"});

    for (int change = 0; change < 400; ++change) {
        path.report(true, {change % 2 == 0 ? "wlan0" : "eth0"});
        pass(1.5);
    }

    EXPECT_LE(restarts(), 301);
    EXPECT_GT(restarts(), 100);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

TEST_F(OutageSimulationTest, APathThatComesBackBringsTheConnectionBackAtOnce) {
    start();
    path.report(true, {"eth0"});
    pass(10);
    fallSilent();
    path.report(false, {});
    pass(300);
    ASSERT_EQ(monitor->reading().downReasonText, "No network connection");

    answerAfter(usualDelay);
    network.setSendFails(false);
    path.report(true, {"wlan0"});
    pass(2);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
}

// The night.

TEST_F(OutageSimulationTest, NightsAsleepLeaveNoTraceInTheFigures) {
    defaults.put(PreferenceKey::showNotifications, true);
    start();
    pass(0.5);

    for (int night = 0; night < 30; ++night) {
        pass(300);
        sleep.goToSleep();
        loop.sleep(8.0 * 3600);
        sleep.wake();
    }
    pass(10);

    EXPECT_EQ(monitor->reading().session.lost, 0);
    EXPECT_EQ(monitor->reading().session.replied, monitor->reading().session.sent);
    EXPECT_THAT(notifications.posted(), IsEmpty());
    EXPECT_EQ(restarts(), 31);
}

TEST_F(OutageSimulationTest, TheMorningAfterTheChartStartsAnew) {
    start();
    pass(600.5);
    sleep.goToSleep();
    loop.sleep(8.0 * 3600);

    sleep.wake();
    pass(10);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_GE(monitor->reading().samples, 7U);
    EXPECT_LE(monitor->reading().samples, 9U);
}

} // namespace

} // namespace tarnwick::simulation
