// Each sleep is told once, whoever tells of it.
#include "platform/linux/SleepEpisodes.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SleepEpisodesTest : public testing::Test {
protected:
    void pass(double seconds) { clocks_.now += seconds; }

    /// The monotonic clock stands still meanwhile.
    void sleep(double seconds) { clocks_.suspended += seconds; }

    void check() { episodes_.check(clocks_); }

    /// As the timer does it.
    void passWithChecks(int seconds) {
        for (int i = 0; i < seconds; ++i) {
            pass(1);
            check();
        }
    }

    void announceSleep() { episodes_.sleepAnnounced(clocks_); }

    void announceWake() { episodes_.wakeAnnounced(clocks_); }

    SleepEpisodes::Reading clocks_{.now = 1000, .suspended = 500};
    std::vector<std::string> told_;
    SleepEpisodes episodes_{
        {
            .willSleep = [this] { told_.emplace_back("sleep"); },
            .didWake = [this] { told_.emplace_back("wake"); },
        },
        clocks_};
};

class AnnouncedSleepEpisodesTest : public SleepEpisodesTest {
protected:
    void SetUp() override { episodes_.setHasAnnouncer(true); }
};

} // namespace

TEST_F(SleepEpisodesTest, WithoutAnnouncerASleepThatTheClocksShowIsToldAtOnceInItsOrder) {
    pass(1);
    sleep(3600);

    check();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
    EXPECT_FALSE(episodes_.isAsleep());
}

TEST_F(SleepEpisodesTest, ASleepThatTheClocksShowIsToldOnce) {
    sleep(3600);

    passWithChecks(3);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(SleepEpisodesTest, ASecondIsNoSleep) {
    sleep(1);

    check();

    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SleepEpisodesTest, MoreThanASecondIsASleep) {
    sleep(1.25);

    check();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(SleepEpisodesTest, ShortSuspensionsDoNotAddUp) {
    for (int i = 0; i < 10; ++i) {
        sleep(0.75);
        passWithChecks(1);
    }

    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SleepEpisodesTest, WhatWasSleptBeforeTheStartDoesNotCount) {
    passWithChecks(3);

    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SleepEpisodesTest, APauseOfTheProgramIsNoSleep) {
    pass(3600);

    check();

    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SleepEpisodesTest, TwoSleepsInARowAreToldEach) {
    sleep(60);
    passWithChecks(1);
    sleep(60);
    passWithChecks(1);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake", "sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnAnnouncedSleepIsToldBeforeItBegins) {
    announceSleep();

    EXPECT_THAT(told_, ElementsAre("sleep"));
    EXPECT_TRUE(episodes_.isAsleep());
}

TEST_F(AnnouncedSleepEpisodesTest, ItsEndIsToldWhenItIsAnnounced) {
    announceSleep();
    sleep(3600);
    announceWake();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, TheClocksTellNothingMoreOfASleepWhoseEndWasAnnounced) {
    announceSleep();
    sleep(3600);
    announceWake();

    passWithChecks(10);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, ClocksThatAreReadBeforeTheEndIsAnnouncedTellNothingTwice) {
    announceSleep();
    sleep(3600);
    check();
    EXPECT_THAT(told_, ElementsAre("sleep"));

    announceWake();

    passWithChecks(10);
    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, ASleepThatIsAnnouncedTwiceIsToldOnce) {
    announceSleep();
    announceSleep();
    sleep(3600);
    announceWake();
    announceWake();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AWakingWithoutASleepIsNotTold) {
    announceWake();

    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(AnnouncedSleepEpisodesTest, ASleepThatWasCalledOffIsTold) {
    announceSleep();
    pass(2);
    announceWake();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnEndWhoseBeginningWasMissedTellsTheWholeSleep) {
    sleep(3600);

    announceWake();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, WithAnAnnouncerAnUnannouncedSleepIsToldAtTheNextCheck) {
    sleep(3600);
    check();
    EXPECT_THAT(told_, IsEmpty());

    passWithChecks(1);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnnouncementsHeardOnlyAfterTheSleepTellNothingTwice) {
    sleep(3600);
    check();
    announceSleep();
    announceWake();

    passWithChecks(10);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnAnnouncementHeardOnlyAfterTheSleepDoesNotLastWithoutItsEnd) {
    sleep(3600);
    announceSleep();

    passWithChecks(6);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AShortWakingOnTheWayIntoADeeperSleepIsNotTold) {
    announceSleep();
    sleep(7200);
    passWithChecks(3);
    sleep(7200);
    check();

    EXPECT_THAT(told_, ElementsAre("sleep"));
    EXPECT_TRUE(episodes_.isAsleep());
}

TEST_F(AnnouncedSleepEpisodesTest, WhenNobodyAnnouncesTheEndTheClocksDo) {
    announceSleep();
    sleep(3600);

    passWithChecks(7);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnEndThatIsAnnouncedAfterTheClocksToldItIsNotToldAgain) {
    announceSleep();
    sleep(3600);
    passWithChecks(7);

    announceWake();

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AMachineThatRunsOnAfterTheAnnouncementCountsAsAwakeInTheEnd) {
    announceSleep();
    passWithChecks(59);
    EXPECT_THAT(told_, ElementsAre("sleep"));

    passWithChecks(2);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, WhoseAnnouncerGoesAwayIsAwake) {
    announceSleep();

    episodes_.setHasAnnouncer(false);

    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

TEST_F(AnnouncedSleepEpisodesTest, AnAnnouncerThatGoesAwayWhileAwakeTellsNothing) {
    episodes_.setHasAnnouncer(false);

    EXPECT_THAT(told_, IsEmpty());
}

TEST(SleepEpisodes, HandlersMayBeLeftOut) {
    SleepEpisodes episodes({}, {.now = 0, .suspended = 0});

    episodes.sleepAnnounced({.now = 1, .suspended = 0});
    EXPECT_TRUE(episodes.isAsleep());

    episodes.wakeAnnounced({.now = 1, .suspended = 60});
    EXPECT_FALSE(episodes.isAsleep());
}

} // namespace tarnwick
