// What one ping holds and what becomes of it. When pings are sent, and the tick: cases/pings.txt.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/ChangeCounter.h"
#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>
#include <optional>
#include <set>

namespace tarnwick::simulation {

namespace {

class MonitorPingLoopTest : public testing::Test, protected MonitorWorld {
protected:
    [[nodiscard]] const Sample& sample(std::size_t index) const {
        return monitor->measured().samples.at(index);
    }
};

TEST_F(MonitorPingLoopTest, TheReadingHasTheHostBeforeTheStart) {
    create();

    EXPECT_EQ(monitor->reading().host, host);
    EXPECT_EQ(monitor->reading().qualityTitle, "Connecting…");
}

TEST_F(MonitorPingLoopTest, PingIdsRiseByOne) {
    start();
    pass(30);

    const auto& sent = network.sent();
    for (std::size_t i = 1; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i].id, sent[i - 1].id + 1);
    }
}

TEST_F(MonitorPingLoopTest, EachMonitorDrawsItsOwnIdentifierAndFirstId) {
    std::set<std::uint16_t> identifiers;
    std::set<std::uint64_t> ids;

    for (int run = 0; run < 16; ++run) {
        start();
        identifiers.insert(network.sent().back().identifier);
        ids.insert(network.sent().back().id);
    }

    EXPECT_GT(identifiers.size(), 1U);
    EXPECT_GT(ids.size(), 1U);
    EXPECT_LT(*ids.rbegin(), std::uint64_t{1} << 32);
}

TEST_F(MonitorPingLoopTest, TheIdentifierOutlivesRestarts) {
    start();
    const std::uint16_t identifier = network.sent()[0].identifier;

    sleep.goToSleep();
    sleep.wake();
    pass(10);

    EXPECT_GT(network.sent().size(), 1U);
    EXPECT_EQ(network.sent().back().identifier, identifier);
}

TEST_F(MonitorPingLoopTest, EachPingBecomesASampleOfItsTime) {
    fallSilent();
    start();
    const RunLoop::WallTime wallAtStart = loop.wallNow();

    pass(1);

    ASSERT_EQ(monitor->reading().samples, 2U);
    EXPECT_EQ(sample(0), (Sample{.id = network.sent()[0].id, .date = wallAtStart}));
    EXPECT_EQ(sample(1), (Sample{.id = network.sent()[1].id, .date = wallAtStart + std::chrono::seconds(1)}));
}

TEST_F(MonitorPingLoopTest, DropsSamplesOfALaterTimeWhenTheWallClockWasSetBack) {
    start();
    pass(10.5);
    loop.setWallClock(loop.wallNow() - std::chrono::seconds(5));

    pass(1);

    // Seven from before that are not later, and the latest.
    EXPECT_EQ(monitor->reading().samples, 8U);
    EXPECT_THAT(
        monitor->measured().samples,
        testing::Each(testing::Field(&Sample::date, testing::Le(loop.wallNow()))));
}

TEST_F(MonitorPingLoopTest, AnOutageIsNotDrawnAgainAfterTheWallClockWasSetBack) {
    start();
    pass(10.5);
    fallSilent();
    pass(60);
    answerAfter(usualDelay);
    pass(30);
    loop.setWallClock(loop.wallNow() - std::chrono::minutes(10));

    pass(10.0 * 60);

    const std::vector<LatencyChart::Bucket>& buckets = monitor->reading().chart.buckets;
    EXPECT_THAT(buckets, testing::Each(testing::Field(&LatencyChart::Bucket::lost, false)));
}

TEST_F(MonitorPingLoopTest, DropsOldSamplesAfterTheWallClockWasSetForward) {
    start();
    pass(10.5);
    loop.setWallClock(loop.wallNow() + std::chrono::hours(1));

    pass(1);

    EXPECT_EQ(monitor->reading().samples, 1U);
}

TEST_F(MonitorPingLoopTest, KeepsTheSamplesOfFiveMinutes) {
    start();

    pass(400);

    EXPECT_EQ(monitor->reading().samples, 301U);
    EXPECT_EQ(loop.wallNow() - sample(0).date, std::chrono::seconds(300));
}

TEST_F(MonitorPingLoopTest, NoTimerMayBeNoticeablyLate) {
    start();
    pass(10);

    EXPECT_LE(loop.largestTolerance(), 0.05);
}

TEST_F(MonitorPingLoopTest, TheReplyTimeoutIsTheDeadlineOfAnAddress) {
    defaults.put(PreferenceKey::hostname, std::string("twofold.test"));
    defaults.put(PreferenceKey::pingTimeout, 2.0);
    setHost("twofold.test", {"192.0.2.1", "192.0.2.2"});
    fallSilent();

    start();
    pass(3);

    EXPECT_EQ(network.sent()[2].address, "192.0.2.1");
    EXPECT_EQ(network.sent()[3].address, "192.0.2.2");
    EXPECT_EQ(monitor->reading().resolvedAddress, "192.0.2.2");
}

TEST_F(MonitorPingLoopTest, ASwitchOfAddressIsPublishedWithThePingThatCausedIt) {
    defaults.put(PreferenceKey::hostname, std::string("twofold.test"));
    defaults.put(PreferenceKey::pingTimeout, 2.0);
    setHost("twofold.test", {"192.0.2.1", "192.0.2.2"});
    fallSilent();
    start();
    std::optional<std::size_t> pingsAtSwitch;
    const ChangeCounter<Reading> readings([&] {
        const Reading& reading = monitor->reading();
        if (!pingsAtSwitch && reading.resolvedAddress == "192.0.2.2") {
            pingsAtSwitch = reading.samples;
        }
        return reading;
    });

    pass(3);

    EXPECT_EQ(pingsAtSwitch, 3U);
}

TEST_F(MonitorPingLoopTest, TheRoundTripEndsWithTheArrivalNotWithTheReading) {
    network.setBehavior([](const SentRequest&) { return Answer{.delay = 0.75, .waited = 0.5}; });
    start();

    pass(0.75);

    EXPECT_EQ(monitor->reading().latestPingMs, 250);
}

TEST_F(MonitorPingLoopTest, TheRoundTripBeginsBeforeTheSendNotWhenItReturns) {
    network.setBehavior([this](const SentRequest&) {
        loop.stall(0.5); // the sending call takes its time
        return Answer{.delay = 0, .waited = 0.25};
    });
    start();
    loop.runPending();

    EXPECT_EQ(monitor->reading().latestPingMs, 250);
    EXPECT_EQ(monitor->reading().session.replied, 1);
}

TEST_F(MonitorPingLoopTest, AStampFromBeforeTheSendMakesNoRoundTripBelowZero) {
    network.setBehavior([](const SentRequest&) { return Answer{.delay = 0.25, .waited = 0.5}; });
    start();

    pass(0.5);

    EXPECT_EQ(monitor->reading().latestPingMs, 0);
}

TEST_F(MonitorPingLoopTest, TheSilenceBeginsWithTheReadingOfAnAnswerNotWithItsArrival) {
    network.setBehavior([this](const SentRequest& request) {
        const bool isFirst = request.at == startedAt;
        return Answer{.delay = 7, .copies = isFirst ? 1 : 0, .waited = 6.5};
    });
    start();
    pass(7);
    ASSERT_EQ(monitor->reading().status, Monitor::Status::up);
    ASSERT_EQ(monitor->reading().latestPingMs, 500);

    pass(8);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    pass(1);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

} // namespace

} // namespace tarnwick::simulation
