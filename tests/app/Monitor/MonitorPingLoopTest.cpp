// The monitor's ping loop: its timers, the road of one ping, the reply, the tick.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/MonitorWorld.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>
#include <set>
#include <utility>

namespace tarnwick::simulation {

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

class MonitorPingLoopTest : public testing::Test, protected MonitorWorld {
protected:
    [[nodiscard]] const Monitor::Sample& sample(std::size_t index) const {
        return monitor->measured().samples.at(index);
    }

    [[nodiscard]] const StatCounter& session() const { return monitor->measured().ledger.session(); }

    /// Only the first ping is answered, after this delay.
    void answerOnlyTheFirstAfter(double delay) {
        network.setBehavior([delay, first = true](const SentRequest&) mutable {
            return Answer{.delay = delay, .copies = std::exchange(first, false) ? 1 : 0};
        });
    }
};

// Start.

TEST_F(MonitorPingLoopTest, KnowsNothingBeforeItIsStarted) {
    create();

    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
    EXPECT_EQ(monitor->reading().score, std::nullopt);
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
    EXPECT_FALSE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().resolvedAddress, std::nullopt);
    EXPECT_EQ(monitor->reading().lastError, std::nullopt);
    EXPECT_EQ(monitor->reading().startError, std::nullopt);
    EXPECT_TRUE(monitor->reading().pathSatisfied);
    EXPECT_THAT(monitor->measured().samples, IsEmpty());
    EXPECT_EQ(monitor->measured().ledger, PingLedger());
}

TEST_F(MonitorPingLoopTest, DoesNothingBeforeItIsStarted) {
    create();

    pass(60);

    EXPECT_EQ(restarts(), 0);
    EXPECT_EQ(path.starts(), 0);
    EXPECT_EQ(sleep.starts(), 0);
}

TEST_F(MonitorPingLoopTest, SendsOnePingAtOnceAndThenOneEveryInterval) {
    defaults.put(PreferenceKey::pingInterval, 5.0);

    start();
    pass(15);

    EXPECT_THAT(sendTimes(), ElementsAre(0, 5, 10, 15));
}

TEST_F(MonitorPingLoopTest, SendsNothingBeforePingingHasStarted) {
    setHost(host, {host}, 3);

    start();
    pass(5);

    EXPECT_THAT(sendTimes(), ElementsAre(3, 4, 5));
}

TEST_F(MonitorPingLoopTest, AFailedStartLeavesNoPingTimer) {
    setUnknownHost(host);

    start();
    pass(120);

    EXPECT_THAT(sendTimes(), IsEmpty());
    EXPECT_EQ(loop.timerCount(), 1U); // that of the tick
}

TEST_F(MonitorPingLoopTest, AfterAFailedStartPingsBeginWithTheOneThatSucceeds) {
    setUnknownHost(host);
    start();
    setHost(host, {host});

    pass(4);

    EXPECT_THAT(sendTimes(), ElementsAre(2, 3, 4));
}

TEST_F(MonitorPingLoopTest, ShowsTheHostsAllTimeFiguresFromTheStart) {
    const StatCounter known{
        .sent = 10, .replied = 9, .lost = 1, .averageMs = 20, .fastestMs = 5, .slowestMs = 80};
    ASSERT_FALSE(store().save({{host, known}, {"192.0.2.9", {.sent = 3}}}));
    setUnknownHost(host);

    start();

    EXPECT_EQ(monitor->measured().ledger.site(), known);
    EXPECT_EQ(monitor->measured().ledger.session(), StatCounter());
}

TEST_F(MonitorPingLoopTest, AHostWithoutStoredFiguresStartsFromZero) {
    ASSERT_FALSE(store().save({{"192.0.2.9", {.sent = 3}}}));
    setUnknownHost(host);

    start();

    EXPECT_EQ(monitor->measured().ledger.site(), StatCounter());
}

TEST_F(MonitorPingLoopTest, ListensToPathAndSleepOnce) {
    start();
    pass(60);

    EXPECT_EQ(path.starts(), 1);
    EXPECT_EQ(sleep.starts(), 1);
}

TEST_F(MonitorPingLoopTest, LeavesNothingRunningWhenItIsGone) {
    fallSilent();
    start();
    pass(5);

    kill();
    path.report(false);
    sleep.goToSleep();
    sleep.wake();
    pass(60);

    EXPECT_EQ(loop.timerCount(), 0U);
    EXPECT_EQ(network.openSockets(), 0U);
    EXPECT_EQ(network.sent().size(), 6U);
}

// Sending.

TEST_F(MonitorPingLoopTest, PingIdsRiseByOneFromABeginningBelowTheLimit) {
    start();
    pass(30);

    const auto& sent = network.sent();
    EXPECT_LT(sent[0].id, std::uint64_t{1} << 32);
    for (std::size_t i = 1; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i].id, sent[i - 1].id + 1);
    }
}

TEST_F(MonitorPingLoopTest, EachMonitorDrawsItsOwnIdentifierAndFirstId) {
    std::set<std::uint16_t> identifiers;
    std::set<std::uint64_t> ids;

    for (int run = 0; run < 8; ++run) {
        start();
        identifiers.insert(network.sent().back().identifier);
        ids.insert(network.sent().back().id);
    }

    EXPECT_GT(identifiers.size(), 1U);
    EXPECT_GT(ids.size(), 1U);
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

    ASSERT_EQ(monitor->measured().samples.size(), 2U);
    EXPECT_EQ(sample(0), (Monitor::Sample{.id = network.sent()[0].id, .date = wallAtStart}));
    EXPECT_EQ(
        sample(1),
        (Monitor::Sample{.id = network.sent()[1].id, .date = wallAtStart + std::chrono::seconds(1)}));
}

TEST_F(MonitorPingLoopTest, DropsOldSamplesWhereverTheyLieAfterTheWallClockWasSetBack) {
    const auto hour = std::chrono::hours(1);
    start();
    pass(10.5);
    loop.setWallClock(loop.wallNow() - hour);
    pass(10);
    const auto latestOfTheHourBack = loop.wallNow();
    loop.setWallClock(loop.wallNow() + hour);

    pass(1);

    // Eleven from before and one from after lie around ten that are an hour old.
    EXPECT_EQ(monitor->measured().samples.size(), 12U);
    EXPECT_THAT(
        monitor->measured().samples,
        testing::Each(testing::Field(&Monitor::Sample::date, testing::Gt(latestOfTheHourBack))));
}

TEST_F(MonitorPingLoopTest, KeepsTheSamplesOfFiveMinutes) {
    start();

    pass(400);

    EXPECT_EQ(monitor->measured().samples.size(), 301U);
    EXPECT_EQ(loop.wallNow() - sample(0).date, std::chrono::seconds(300));
}

TEST_F(MonitorPingLoopTest, EachPingIsCountedInSessionAndSite) {
    fallSilent();
    start();

    pass(2);

    EXPECT_EQ(session().sent, 3);
    EXPECT_EQ(monitor->measured().ledger.site().sent, 3);
}

TEST_F(MonitorPingLoopTest, PingsSentWhileDownAreNotCounted) {
    fallSilent();
    start();
    pass(30);
    ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
    const std::int64_t before = session().sent;

    pass(30);

    EXPECT_EQ(session().sent, before);
    EXPECT_EQ(before, 9);
    EXPECT_GT(network.sent().size(), 60U);
}

TEST_F(MonitorPingLoopTest, APingThatCouldNotBeSentIsBookedAndLostLikeAnyOther) {
    network.setSendFails(true);
    start();

    pass(5);

    EXPECT_EQ(session().sent, 6);
    EXPECT_EQ(session().lost, 1);
    EXPECT_TRUE(sample(0).lost);
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

// Rescheduling.

struct Rescheduling {
    std::string name;
    double changeAt;
    double nextPing;

    friend void PrintTo(const Rescheduling& param, std::ostream* out) { *out << param.name; }
};

class ReschedulingTest : public MonitorPingLoopTest, public testing::WithParamInterface<Rescheduling> {};

TEST_P(ReschedulingTest, KeepsTheGapSinceTheLastPingAndNeverFiresInThePast) {
    defaults.put(PreferenceKey::pingInterval, 60.0);
    start();
    passUntil(GetParam().changeAt);

    prefs->setPingInterval(10);
    passUntil(GetParam().nextPing + 10);

    EXPECT_THAT(sendTimes(), ElementsAre(0, GetParam().nextPing, GetParam().nextPing + 10));
}

INSTANTIATE_TEST_SUITE_P(
    MonitorPingLoopTest, ReschedulingTest,
    testing::Values(
        Rescheduling{"LastPingFourSecondsAgo", 4, 10}, Rescheduling{"LastPingThirtySecondsAgo", 30, 30}),
    [](const auto& instance) { return instance.param.name; });

// Replies.

TEST_F(MonitorPingLoopTest, AReplyCompletesItsSampleAndIsPublished) {
    answerAfter(0.25);
    start();

    pass(0.25);

    EXPECT_EQ(sample(0).rttMs, 250);
    EXPECT_FALSE(sample(0).lost);
    EXPECT_EQ(monitor->reading().latestPingMs, 250);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_EQ(session(), (StatCounter{1, 1, 0, 250, 250, 250}));
}

TEST_F(MonitorPingLoopTest, RepliesOutOfOrderCompleteTheirOwnSamples) {
    network.setBehavior(
        [delay = 2.5](const SentRequest&) mutable { return Answer{.delay = std::exchange(delay, 0.5)}; });
    start();

    pass(2.75);

    EXPECT_EQ(sample(0).rttMs, 2500);
    EXPECT_EQ(sample(1).rttMs, 500);
    EXPECT_EQ(monitor->reading().latestPingMs, 500);
}

TEST_F(MonitorPingLoopTest, AReplyToNoPendingPingChangesNothing) {
    fallSilent();
    start();
    const PingLedger ledger = monitor->measured().ledger;
    const Monitor::Samples samples = monitor->measured().samples;

    deliverReply(network.sent()[0].id + 1);

    EXPECT_EQ(monitor->measured().ledger, ledger);
    EXPECT_EQ(monitor->measured().samples, samples);
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
}

TEST_F(MonitorPingLoopTest, ASecondReplyToTheSamePingChangesNothing) {
    answerOnlyTheFirstAfter(usualDelay);
    start();
    pass(0.5);

    deliverReply(network.sent()[0].id);

    EXPECT_EQ(monitor->reading().latestPingMs, usualDelay * 1000);
    EXPECT_EQ(sample(0).rttMs, usualDelay * 1000);
    EXPECT_EQ(session().replied, 1);
}

TEST_F(MonitorPingLoopTest, AReplyToAPingThatHasLeftTheWindowChangesNothing) {
    answerOnlyTheFirstAfter(31.5);
    start();

    pass(32);

    EXPECT_EQ(sample(0).rttMs, std::nullopt);
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(MonitorPingLoopTest, ALateReplyIsShownButThePingStaysLost) {
    answerOnlyTheFirstAfter(5.5);
    start();
    pass(5);
    ASSERT_TRUE(sample(0).lost);

    pass(0.5);

    EXPECT_EQ(sample(0).rttMs, 5500);
    EXPECT_TRUE(sample(0).lost);
    EXPECT_EQ(monitor->reading().latestPingMs, 5500);
    EXPECT_EQ(session().replied, 0);
    EXPECT_EQ(session().lost, 1);
}

TEST_F(MonitorPingLoopTest, AReplyBeyondTheTimeoutCountsAsLostBeforeTheNextTick) {
    answerOnlyTheFirstAfter(4.5);
    start();

    pass(4.5);

    EXPECT_FALSE(sample(0).lost);
    EXPECT_EQ(session().replied, 0);
    EXPECT_EQ(session().lost, 1);
}

TEST_F(MonitorPingLoopTest, AReplyBeyondTheTimeoutIsCountedLostOnce) {
    answerOnlyTheFirstAfter(4.5);
    start();

    pass(5);

    EXPECT_TRUE(sample(0).lost);
    EXPECT_EQ(session().lost, 1);
}

TEST_F(MonitorPingLoopTest, AReplyAtExactlyTheTimeoutCountsAsReplied) {
    answerOnlyTheFirstAfter(4);
    start();

    pass(5);

    EXPECT_EQ(session().replied, 1);
    EXPECT_EQ(session().lost, 0);
    EXPECT_FALSE(sample(0).lost);
}

TEST_F(MonitorPingLoopTest, TheRoundTripEndsWithTheArrivalNotWithTheReading) {
    network.setBehavior([](const SentRequest&) { return Answer{.delay = 0.75, .waited = 0.5}; });
    start();

    pass(0.75);

    EXPECT_EQ(monitor->reading().latestPingMs, 250);
}

TEST_F(MonitorPingLoopTest, AnAnswerThatArrivedBeforeTheSendReturnedTookNoTime) {
    network.setBehavior([this](const SentRequest&) {
        loop.stall(0.5); // the sending call takes its time
        return Answer{.delay = 0, .waited = 0.25};
    });
    start();
    loop.runPending();

    EXPECT_EQ(monitor->reading().latestPingMs, 0);
    EXPECT_EQ(session().replied, 1);
}

// The tick.

TEST_F(MonitorPingLoopTest, TicksEverySecondWhetherPingingHasStartedOrNot) {
    network.setHangingHost(host);
    std::vector<double> ticks;
    start();
    monitor->onTick = [&] { ticks.push_back(monitor->reading().evaluatedAt.monotonic - startedAt); };

    pass(3.5);

    EXPECT_THAT(ticks, ElementsAre(1, 2, 3));
}

TEST_F(MonitorPingLoopTest, BeforeTheFirstTickTheEvaluationDatesFromTheCreation) {
    start();

    pass(0.75);

    EXPECT_EQ(monitor->reading().evaluatedAt.monotonic, startedAt);
}

TEST_F(MonitorPingLoopTest, ALostPingIsMarkedInItsSampleAndCounted) {
    fallSilent();
    start();

    pass(5);

    EXPECT_TRUE(sample(0).lost);
    EXPECT_FALSE(sample(1).lost);
    EXPECT_EQ(session().lost, 1);
    EXPECT_EQ(monitor->measured().ledger.site().lost, 1);
}

TEST_F(MonitorPingLoopTest, APingIsNotLostAtExactlyTheTimeout) {
    fallSilent();
    start();

    pass(4);

    EXPECT_FALSE(sample(0).lost);
    EXPECT_EQ(session().lost, 0);
}

TEST_F(MonitorPingLoopTest, LossIsKnownOnceAPingIsInTheWindow) {
    setHost(host, {host}, 2.5);
    start();
    pass(2.75);
    ASSERT_FALSE(monitor->reading().lossIsKnown);

    pass(0.25);

    EXPECT_TRUE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
}

TEST_F(MonitorPingLoopTest, LossIsTheShareOfLostPingsInTheWindow) {
    network.setBehavior([count = 0](const SentRequest&) mutable {
        return Answer{.delay = usualDelay, .copies = ++count == 3 ? 0 : 1};
    });
    start();

    pass(10);

    EXPECT_DOUBLE_EQ(monitor->reading().lossPercent, 10);
}

TEST_F(MonitorPingLoopTest, LossIsUnknownAgainWhenTheWindowIsEmpty) {
    fallSilent();
    start();
    pass(5);
    ASSERT_GT(monitor->reading().lossPercent, 0);
    network.setHangingHost(host);

    pass(60); // the recovery restarts hang: nothing is sent any more

    EXPECT_FALSE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
}

TEST_F(MonitorPingLoopTest, TheScoreStandsWhenNothingCanBeScored) {
    start();
    pass(10);
    ASSERT_TRUE(monitor->reading().score);
    const double before = *monitor->reading().score;

    sleep.goToSleep();
    sleep.wake();
    pass(1);

    EXPECT_EQ(monitor->reading().score, before);
    EXPECT_FALSE(monitor->reading().lossIsKnown);
}

TEST_F(MonitorPingLoopTest, TheScorerReadsTheSettingsAtEveryTick) {
    answerAfter(0.5);
    start();
    pass(10.75);
    ASSERT_LT(*monitor->reading().score, 0.6);

    prefs->setSlowPingThresholdMs(500);
    pass(1);

    EXPECT_THAT(*monitor->reading().score, DoubleNear(1, 1e-9));
}

TEST_F(MonitorPingLoopTest, ForgetsTheBookingsOfPingsThatLeaveTheWindow) {
    defaults.put(PreferenceKey::pingTimeout, 100.0);
    fallSilent();
    start();

    pass(90);

    EXPECT_LE(monitor->measured().ledger.bookings(), 31U);
    EXPECT_EQ(session().lost, 0);
}

TEST_F(MonitorPingLoopTest, WhileAsleepNothingTicks) {
    start();
    pass(5);
    int ticks = 0;
    monitor->onTick = [&] { ++ticks; };

    sleep.goToSleep();
    pass(60);

    EXPECT_EQ(ticks, 0);
    EXPECT_EQ(monitor->reading().evaluatedAt.monotonic, startedAt + 5);
}

TEST_F(MonitorPingLoopTest, SavesAfterTwentyTicks) {
    start();
    pass(19.5);
    ASSERT_FALSE(std::filesystem::exists(statsFile()));

    pass(0.5);

    EXPECT_EQ(store().load().at(host).sent, 20);
}

TEST_F(MonitorPingLoopTest, SavesWhatTheSameTickHasFoundLost) {
    start();
    pass(14.5);
    fallSilent();

    pass(5.5);

    EXPECT_EQ(store().load().at(host).lost, 1);
}

TEST_F(MonitorPingLoopTest, SavesOnceInTwentyTicks) {
    start();
    pass(20);
    std::filesystem::remove(statsFile());

    pass(19.5);
    const bool savedBetween = std::filesystem::exists(statsFile());
    pass(0.5);

    EXPECT_FALSE(savedBetween);
    EXPECT_EQ(store().load().at(host).sent, 40);
}

TEST_F(MonitorPingLoopTest, TicksMissedWhileAsleepDoNotBringTheNextSaveNearer) {
    start();
    pass(10);
    sleep.goToSleep();
    const std::string savedForSleep = test::contentOf(statsFile());
    ASSERT_FALSE(savedForSleep.empty());
    pass(30);
    sleep.wake();

    pass(9.5);
    const std::string savedEarly = test::contentOf(statsFile());
    pass(0.5);

    EXPECT_EQ(savedEarly, savedForSleep);
    EXPECT_NE(test::contentOf(statsFile()), savedForSleep);
}

} // namespace

} // namespace tarnwick::simulation
