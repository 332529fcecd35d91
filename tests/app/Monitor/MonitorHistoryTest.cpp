// What the monitor tells the journal.
#include "core/History/Availability.h"
#include "tests/app/MonitorSurroundings.h"
#include "tests/simulation/RecordingJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* watchedHost = "192.0.2.1";

/// Pings every second; answers after 20 ms. Begins at a full minute.
class MonitorHistoryTest : public testing::Test, protected MonitorSurroundings {
protected:
    MonitorHistoryTest() {
        prefs.setHostname(watchedHost);
        loop.setWallClock(begin);
    }

    void watchFor(double seconds) {
        path.report(true, {"eth0"});
        monitor.start();
        loop.advance(seconds);
    }

    void answer() { answerAfter(0.02); }

    [[nodiscard]] History kept(const std::string& host = watchedHost) {
        monitor.saveStats();
        return journal.read(host, {});
    }

    [[nodiscard]] Availability availability() {
        return availabilityIn(kept(), {.from = begin, .to = kept().until});
    }

    [[nodiscard]] bool isDown() const { return monitor.reading().status == Monitor::Status::down; }

    /// In seconds since the beginning.
    [[nodiscard]] static Gap gapOf(Gap::Kind kind, int from, int to) {
        return {
            .kind = kind,
            .span = {.from = begin + std::chrono::seconds(from), .to = begin + std::chrono::seconds(to)}};
    }

    static constexpr std::chrono::sys_days begin{std::chrono::year(2026) / 11 / 23};

    simulation::RecordingJournal journal;
    Monitor monitor{prefs, environment(&journal)};
};

} // namespace

TEST_F(MonitorHistoryTest, HoldsTheSamePingsAsTheStatistics) {
    watchFor(600);
    fallSilent();
    loop.advance(3); // too short for an outage
    answer();
    loop.advance(597);

    std::int64_t sent = 0;
    std::int64_t replied = 0;
    std::int64_t lost = 0;
    for (const Period& minute : kept().periods) {
        sent += minute.figures.sent;
        replied += minute.figures.replied;
        lost += minute.figures.lost;
    }
    EXPECT_NEAR(kept().periods.at(0).figures.medianMs().value_or(0), 20, 0.5);
    const StatCounter& session = monitor.measured().ledger.session();
    EXPECT_EQ(sent, session.sent);
    EXPECT_EQ(replied, session.replied);
    EXPECT_EQ(lost, session.lost);
    EXPECT_EQ(lost, 3);
    EXPECT_NEAR(availability().watched, 1200, 2);
    EXPECT_EQ(availability().down, 0);
}

TEST_F(MonitorHistoryTest, HoldsAnOutageFromTheFirstLostPingToTheAnswer) {
    watchFor(60.5);
    fallSilent();
    loop.advance(30);
    EXPECT_TRUE(isDown());
    answer();
    loop.advance(30);

    const History history = kept();
    ASSERT_THAT(history.episodes, SizeIs(1));
    const Episode& outage = history.episodes[0];
    EXPECT_EQ(outage.kind, Episode::Kind::outage);
    EXPECT_EQ(outage.start, begin + std::chrono::seconds(61));
    ASSERT_TRUE(outage.end);
    EXPECT_NEAR(static_cast<double>((*outage.end - outage.start).count()), 30, 2);
    EXPECT_GE(outage.pingsLost, 25);
    EXPECT_EQ(outage.address, watchedHost);
    EXPECT_EQ(outage.interface, "eth0");
}

TEST_F(MonitorHistoryTest, HoldsADegradationWhileTheBarsAreFew) {
    watchFor(60);
    answerAfter(1.5);
    loop.advance(60);
    answer();
    loop.advance(120);

    const History history = kept();
    ASSERT_THAT(history.episodes, SizeIs(1));
    EXPECT_EQ(history.episodes[0].kind, Episode::Kind::degradation);
    EXPECT_TRUE(history.episodes[0].end);
}

TEST_F(MonitorHistoryTest, HoldsASleepAsAGap) {
    watchFor(60);
    sleep.goToSleep();
    loop.sleep(3600);
    sleep.wake();
    loop.advance(60);

    EXPECT_EQ(
        kept().gaps,
        (std::vector{Gap{
            .kind = Gap::Kind::asleep,
            .span = {.from = begin + std::chrono::seconds(60), .to = begin + std::chrono::seconds(3660)}}}));
    EXPECT_NEAR(availability().watched, 120, 2);
}

TEST_F(MonitorHistoryTest, HoldsAPauseAsAGap) {
    watchFor(60);
    monitor.pause(600);
    loop.advance(660);

    EXPECT_EQ(kept().gaps, std::vector{gapOf(Gap::Kind::paused, 60, 660)});
    EXPECT_NEAR(availability().watched, 120, 2);
}

TEST_F(MonitorHistoryTest, AnOutageThatLastsIsCutByAPause) {
    watchFor(60);
    fallSilent();
    loop.advance(30);
    ASSERT_TRUE(isDown());
    monitor.pause(600);
    loop.advance(660);
    ASSERT_TRUE(isDown());
    answer();
    loop.advance(30);

    const History history = kept();
    ASSERT_THAT(history.episodes, SizeIs(2));
    EXPECT_EQ(history.episodes[0].end, begin + std::chrono::seconds(90));
    EXPECT_EQ(history.episodes[1].start, begin + std::chrono::seconds(690));
}

TEST_F(MonitorHistoryTest, TellsASleepApartFromThePauseAroundIt) {
    watchFor(60);
    monitor.pause(3600);
    loop.advance(600);
    sleep.goToSleep();
    loop.sleep(1200);
    sleep.wake();
    loop.advance(1860);

    EXPECT_EQ(
        kept().gaps, (std::vector{
                         gapOf(Gap::Kind::paused, 60, 660), gapOf(Gap::Kind::asleep, 660, 1860),
                         gapOf(Gap::Kind::paused, 1860, 3660)}));
}

TEST_F(MonitorHistoryTest, APauseThatIsOverInASleepEndsWhereThatBegan) {
    watchFor(60);
    monitor.pause(3600);
    loop.advance(600);
    sleep.goToSleep();
    loop.sleep(36'000);
    sleep.wake();
    loop.advance(60);

    EXPECT_EQ(
        kept().gaps, (std::vector{gapOf(Gap::Kind::paused, 60, 660), gapOf(Gap::Kind::asleep, 660, 36'660)}));
}

TEST_F(MonitorHistoryTest, APauseThatBeganInASleepIsAGapFromTheWake) {
    watchFor(60);
    sleep.goToSleep();
    monitor.pause(3600);
    loop.sleep(1800);
    sleep.wake();
    loop.advance(1860);

    EXPECT_EQ(
        kept().gaps, (std::vector{gapOf(Gap::Kind::asleep, 60, 1860), gapOf(Gap::Kind::paused, 1860, 3660)}));
}

TEST_F(MonitorHistoryTest, APauseThatIsEndedAfterASleepInItEndsThen) {
    watchFor(60);
    monitor.pause(3600);
    loop.advance(600);
    sleep.goToSleep();
    loop.sleep(1200);
    sleep.wake();
    loop.advance(100);
    monitor.resume();
    loop.advance(60);

    EXPECT_EQ(
        kept().gaps, (std::vector{
                         gapOf(Gap::Kind::paused, 60, 660), gapOf(Gap::Kind::asleep, 660, 1860),
                         gapOf(Gap::Kind::paused, 1860, 1960)}));
    EXPECT_NEAR(availability().watched, 120, 2);
}

TEST_F(MonitorHistoryTest, APauseThatIsEndedInASleepLeavesTheSleepAsItIs) {
    watchFor(60);
    monitor.pause(3600);
    loop.advance(600);
    sleep.goToSleep();
    monitor.resume();
    loop.sleep(1200);
    sleep.wake();
    loop.advance(60);

    EXPECT_EQ(
        kept().gaps, (std::vector{gapOf(Gap::Kind::paused, 60, 660), gapOf(Gap::Kind::asleep, 660, 1860)}));
}

TEST_F(MonitorHistoryTest, APauseIsWrittenWhileItLasts) {
    watchFor(60);
    monitor.pause(3600);
    loop.advance(600);

    EXPECT_EQ(journal.read(watchedHost, {}).gaps, std::vector{gapOf(Gap::Kind::paused, 60, 660)});
}

TEST_F(MonitorHistoryTest, APauseOverAChangeOfTheHostIsOneGap) {
    watchFor(60);
    monitor.pause(600);
    loop.advance(300);
    monitor.setHostname("192.0.2.2");
    loop.advance(360);

    EXPECT_EQ(kept().gaps, std::vector{gapOf(Gap::Kind::paused, 60, 660)});
    EXPECT_GE(kept("192.0.2.2").periods.at(0).figures.sent, 59);
    EXPECT_THAT(kept().periods, SizeIs(testing::Le(2U))) << "nothing was pinged in the pause";
}

TEST_F(MonitorHistoryTest, AProgramThatIsStartedAnewInAPauseGoesOnAndTheGapEndsWithTheFirst) {
    path.report(true, {"eth0"});
    std::optional<Monitor> program(std::in_place, prefs, environment(&journal));
    program->start();
    loop.advance(60);
    program->pause(3600);
    loop.advance(100);
    program->saveStats();
    program.reset();
    loop.advance(40);
    program.emplace(prefs, environment(&journal));
    program->start();
    loop.advance(60);
    program->saveStats();

    EXPECT_EQ(
        journal.read(watchedHost, {}).gaps,
        (std::vector{gapOf(Gap::Kind::paused, 60, 160), gapOf(Gap::Kind::notRunning, 160, 200)}));
    EXPECT_NEAR(availability().watched, 120, 2);
}

TEST_F(MonitorHistoryTest, SwitchedOnInAPauseItHoldsThePause) {
    prefs.setKeepsHistory(false);
    watchFor(60);
    monitor.pause(600);
    loop.advance(60);
    prefs.setKeepsHistory(true);
    loop.advance(600);

    EXPECT_EQ(kept().gaps, std::vector{gapOf(Gap::Kind::paused, 120, 660)});
}

TEST_F(MonitorHistoryTest, HoldsAStoppedProgramAsAGap) {
    watchFor(60);
    loop.stall(100);
    loop.advance(60);

    ASSERT_THAT(kept().gaps, SizeIs(1));
    EXPECT_EQ(kept().gaps[0].kind, Gap::Kind::notRunning);
    EXPECT_NEAR(static_cast<double>(kept().gaps[0].span.length().count()), 100, 2);
    EXPECT_THAT(kept().episodes, IsEmpty());
}

TEST_F(MonitorHistoryTest, FollowsTheHost) {
    watchFor(60);
    monitor.setHostname("192.0.2.2");
    loop.advance(60);

    EXPECT_GE(kept().periods.at(0).figures.sent, 59);
    EXPECT_GE(kept("192.0.2.2").periods.at(0).figures.sent, 58);
}

TEST_F(MonitorHistoryTest, IsKeptOnlyWhileItIsWanted) {
    prefs.setKeepsHistory(false);
    watchFor(120);
    monitor.saveStats();
    EXPECT_EQ(journal.opened, 0);

    prefs.setKeepsHistory(true);
    loop.advance(60);
    EXPECT_NEAR(static_cast<double>(kept().periods.at(0).figures.sent), 60, 2);

    prefs.setKeepsHistory(false);
    const std::size_t batches = journal.batches.size();
    loop.advance(120);
    monitor.saveStats();
    EXPECT_EQ(journal.batches.size(), batches);
}

TEST_F(MonitorHistoryTest, IsWrittenOnceAMinute) {
    watchFor(3600.5);

    EXPECT_THAT(journal.batches, SizeIs(60));
}

TEST_F(MonitorHistoryTest, SaysThatItIsNotStored) {
    watchFor(60);
    EXPECT_THAT(monitor.reading().notices, IsEmpty());
    journal.setState(Journal::State::cannotWrite);
    loop.advance(60);
    ASSERT_THAT(monitor.reading().notices, SizeIs(1));
    EXPECT_EQ(monitor.reading().notices[0].kind, Notice::Kind::noHistory);

    prefs.setKeepsHistory(false);
    EXPECT_THAT(monitor.reading().notices, IsEmpty());
}

TEST_F(MonitorHistoryTest, TellsThePastUpToThisMomentAndWritesNothing) {
    watchFor(90.5);
    const std::size_t batches = journal.batches.size();

    const History history = monitor.history({.from = begin, .to = begin + std::chrono::hours(1)});

    std::int64_t sent = 0;
    for (const Period& minute : history.periods) {
        sent += minute.figures.sent;
    }
    EXPECT_THAT(history.periods, SizeIs(2));
    EXPECT_EQ(sent, monitor.measured().ledger.session().sent);
    EXPECT_EQ(history.until, begin + std::chrono::seconds(90));
    EXPECT_EQ(journal.batches.size(), batches);
}

TEST_F(MonitorHistoryTest, TellsThePastOfTheHostThatIsWatched) {
    watchFor(90.5);
    prefs.setHostname("192.0.2.2");

    EXPECT_THAT(monitor.history({.from = begin, .to = begin + std::chrono::hours(1)}).periods, IsEmpty());
}

TEST_F(MonitorHistoryTest, TellsWhyThereMayBeNone) {
    watchFor(1);
    EXPECT_EQ(monitor.whyNoHistory(), "Nothing has been recorded yet.");

    journal.setState(Journal::State::cannotWrite);
    EXPECT_EQ(monitor.whyNoHistory(), "The history is not stored: no space.");

    prefs.setKeepsHistory(false);
    EXPECT_EQ(monitor.whyNoHistory(), "No history is kept: KeepHistory is off.");
}

} // namespace tarnwick
