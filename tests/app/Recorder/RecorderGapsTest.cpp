// When nothing was pinged.
#include "tests/app/Recorder/RecorderWorld.h"

namespace tarnwick {
namespace {

class RecorderGaps : public test::RecorderWorld {
protected:
    void start() { recorder.start(test::recordedHost); }

    [[nodiscard]] std::vector<Gap> gaps() { return kept().gaps; }

    [[nodiscard]] static Gap gapOf(Gap::Kind kind, double from, double to) {
        return {.kind = kind, .span = {.from = after(from), .to = after(to)}};
    }
};

TEST_F(RecorderGaps, BeforeTheStartGoFromTheLastRecording) {
    journal.setUntil(after(-3600));
    start();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, -3600, 0)});
}

TEST_F(RecorderGaps, BeforeTheFirstRecordingAreNone) {
    start();
    pass(5);

    EXPECT_TRUE(gaps().empty());
}

TEST_F(RecorderGaps, AreNoneWhereTheClockWasSetBackSince) {
    journal.setUntil(after(3600));
    start();
    pass(5);

    EXPECT_TRUE(gaps().empty());
}

TEST_F(RecorderGaps, AfterAStopGoToTheNextStart) {
    start();
    pass(5);
    recorder.stop();
    loop.advance(100);
    start();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, 5, 105)});
}

TEST_F(RecorderGaps, AreSleeps) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(3600);
    recorder.resume();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::asleep, 10, 3610)});
    EXPECT_EQ(kept().periods.back().start, after(3600));
}

TEST_F(RecorderGaps, ASleepIsWrittenUpToItsBeginning) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::asleep);
    loop.advance(5);
    recorder.save(); // the program ends before the machine sleeps

    EXPECT_EQ(journal.until(), after(10));
}

TEST_F(RecorderGaps, APauseCountsTimeThatGoesBy) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 3600; ++second) {
        passSecond();
    }
    recorder.resume();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::paused, 10, 3610)});
    double watched = 0;
    for (const Period& minute : kept().periods) {
        watched += minute.figures.watchedSeconds;
    }
    EXPECT_NEAR(watched, 15, 1);
}

TEST_F(RecorderGaps, APauseIsWrittenWhileItLasts) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 600; ++second) {
        passSecond();
    }

    EXPECT_EQ(journal.read(test::recordedHost, {}).gaps, std::vector{gapOf(Gap::Kind::paused, 10, 600)});
    EXPECT_EQ(journal.until(), after(600));
    EXPECT_EQ(journal.batches.size(), 11U); // at its beginning, then once a minute
}

TEST_F(RecorderGaps, APauseInWhichTheProgramEndsGoesUpToThat) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    loop.advance(30);
    recorder.save();
    loop.advance(100);
    Recorder next(loop, &journal);
    next.start(test::recordedHost);
    next.save();

    EXPECT_EQ(
        journal.read(test::recordedHost, {}).gaps,
        (std::vector{gapOf(Gap::Kind::paused, 10, 40), gapOf(Gap::Kind::notRunning, 40, 140)}));
}

TEST_F(RecorderGaps, APauseWaitsForAFullDiskLikeTheRest) {
    start();
    pass(10);
    journal.setState(Journal::State::cannotWrite);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 600; ++second) {
        passSecond();
    }
    journal.setState(Journal::State::writes);
    recorder.resume();
    pass(60);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::paused, 10, 610)});
    ASSERT_EQ(journal.batches.size(), 2U);
    EXPECT_EQ(journal.batches[0].gaps.size(), 1U) << "it waited once for every minute";
}

TEST_F(RecorderGaps, APauseOverAChangeOfTheHostIsOneAlsoWhenTheDiskIsFull) {
    start();
    pass(10);
    journal.setState(Journal::State::cannotWrite);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    recorder.setHost("two.example");
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    EXPECT_EQ(recorder.history("two.example", {}).gaps, std::vector{gapOf(Gap::Kind::paused, 10, 210)});
    journal.setState(Journal::State::writes);
    recorder.resume();

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::paused, 10, 210)});
    EXPECT_EQ(kept("two.example").gaps, std::vector{gapOf(Gap::Kind::paused, 10, 210)});
}

TEST_F(RecorderGaps, APauseBeginsWhereAnotherProgramEnded) {
    journal.setState(Journal::State::otherWrites);
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    journal.setUntil(after(100)); // the other one watched until then
    journal.setState(Journal::State::writes);
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    recorder.resume();
    pass(10);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::paused, 100, 210)});
}

TEST_F(RecorderGaps, AClockThatIsSetBackInAPauseMakesNone) {
    start();
    pass(600);
    recorder.interrupt(Gap::Kind::paused);
    loop.setWallClock(loop.wallNow() - std::chrono::seconds(300));
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    recorder.resume();
    pass(10);

    EXPECT_TRUE(gaps().empty());
}

TEST_F(RecorderGaps, ASleepToldOfAfterwardsBeginsAtTheLastTick) {
    start();
    pass(10);
    loop.sleep(3600);
    recorder.interrupt(Gap::Kind::asleep);
    recorder.resume();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::asleep, 9, 3610)});
}

TEST_F(RecorderGaps, ASleepThatATickHasFoundBeforeIsOne) {
    start();
    pass(10);
    loop.sleep(3600);
    recorder.tick();
    loop.advance(0.5);
    recorder.interrupt(Gap::Kind::asleep);
    recorder.resume();
    pass(5);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::asleep, 9, 3610)});
}

TEST_F(RecorderGaps, ASleepThatFollowsAHoldUpMuchLaterIsAnother) {
    start();
    pass(10);
    loop.stall(100);
    pass(10);
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(50);
    recorder.resume();

    EXPECT_EQ(
        gaps(), (std::vector{gapOf(Gap::Kind::notRunning, 9, 110), gapOf(Gap::Kind::asleep, 120, 170)}));
}

TEST_F(RecorderGaps, ASleepRightAfterAHoldUpThatIsWrittenIsAnother) {
    start();
    pass(10);
    loop.stall(100);
    recorder.tick();
    recorder.follow(stateOf(Trouble::down)); // is written at once, with the gap
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(50);
    recorder.resume();

    EXPECT_EQ(
        gaps(), (std::vector{gapOf(Gap::Kind::notRunning, 9, 110), gapOf(Gap::Kind::asleep, 110, 160)}));
}

TEST_F(RecorderGaps, ASleepDuringWhichRecordingStopsGoesToTheNextStart) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::asleep);
    recorder.stop();
    loop.sleep(50);
    start();
    pass(10);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, 10, 60)});
    EXPECT_EQ(kept().periods.at(1).figures.sent, 10);
}

TEST_F(RecorderGaps, AreNoneOfThisProgramWhileAnotherOneWrites) {
    journal.setState(Journal::State::otherWrites);
    start();
    pass(70);
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(50);
    recorder.resume();
    pass(70);
    journal.setState(Journal::State::writes);
    pass(60);

    EXPECT_TRUE(gaps().empty());
}

TEST_F(RecorderGaps, AHeldUpProgramWatchedNothing) {
    start();
    pass(10);
    loop.stall(100);
    pass(10);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, 9, 110)});
    double watched = 0;
    for (const Period& minute : kept().periods) {
        watched += minute.figures.watchedSeconds;
    }
    EXPECT_NEAR(watched, 20, 2);
}

TEST_F(RecorderGaps, ABusySecondIsNone) {
    start();
    pass(10);
    loop.stall(2);
    pass(10);

    EXPECT_TRUE(gaps().empty());
}

TEST_F(RecorderGaps, AClockThatIsSetForwardMakesOne) {
    start();
    pass(10);
    loop.setWallClock(loop.wallNow() + std::chrono::hours(2));
    pass(10);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, 9, 7210)});
}

TEST_F(RecorderGaps, AClockThatIsSetBackMakesNone) {
    start();
    pass(3700);
    loop.setWallClock(loop.wallNow() - std::chrono::hours(1));
    pass(10);

    EXPECT_TRUE(gaps().empty());
    EXPECT_EQ(kept().periods.at(1).figures.sent, 70); // the minute came twice
}

TEST_F(RecorderGaps, AreCutWhereTheClockIsSetBackIntoThem) {
    journal.setUntil(after(0));
    loop.setWallClock(begin + std::chrono::hours(2)); // as another system has left the clock of the machine
    start();
    pass(10);
    recorder.save();
    loop.setWallClock(begin + std::chrono::seconds(40));
    pass(10);

    EXPECT_EQ(gaps(), std::vector{gapOf(Gap::Kind::notRunning, 0, 40)});
}

TEST_F(RecorderGaps, TheLocalClocksChangeIsNone) {
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    loop.setWallClock(std::chrono::sys_days(std::chrono::year(2026) / 3 / 29) + std::chrono::minutes(58));
    start();
    pass(240);
    ::unsetenv("TZ");

    EXPECT_TRUE(gaps().empty());
    EXPECT_EQ(kept().periods.size(), 4U);
}

} // namespace
} // namespace tarnwick
