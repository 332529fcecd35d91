// What is left of the past once the history was cleared: here, or by another program.
#include "tests/app/Recorder/RecorderWorld.h"

namespace tarnwick {
namespace {

class RecorderClearing : public test::RecorderWorld {
protected:
    void start() { recorder.start(test::recordedHost); }

    [[nodiscard]] std::int64_t pingsKept() {
        std::int64_t sum = 0;
        for (const Period& minute : kept().periods) {
            sum += minute.figures.sent;
        }
        return sum;
    }
};

TEST_F(RecorderClearing, LeavesNothingOfWhatWasWrittenOrWaits) {
    start();
    pass(90);
    EXPECT_TRUE(recorder.clear());

    EXPECT_EQ(pingsKept(), 0);
    pass(10);
    EXPECT_EQ(pingsKept(), 10);
    EXPECT_TRUE(kept().gaps.empty());
}

TEST_F(RecorderClearing, LeavesNothingThatAFullDiskDidNotTake) {
    start();
    journal.setState(Journal::State::cannotWrite);
    pass(600);
    EXPECT_TRUE(recorder.clear());
    journal.setState(Journal::State::writes);
    pass(10);

    EXPECT_EQ(pingsKept(), 10);
}

TEST_F(RecorderClearing, APingThatWasSentBeforeIsForgotten) {
    start();
    pass(10);
    recorder.pingSent(++lastId, true);
    recorder.clear();
    recorder.pingReplied(lastId, 20, true);
    recorder.pingSent(++lastId, true);
    recorder.clear();
    recorder.pingLost(lastId);

    EXPECT_TRUE(kept().periods.empty());
}

TEST_F(RecorderClearing, AnOutageThatLastsBeginsThen) {
    start();
    pass(10);
    passSilent(20);
    recorder.follow(stateOf(Trouble::down));
    passSilent(70, false);
    recorder.clear();
    passSilent(70, false);

    const History history = kept();
    ASSERT_EQ(history.episodes.size(), 1U);
    EXPECT_EQ(history.episodes[0].start, after(100));
    EXPECT_EQ(history.episodes[0].end, std::nullopt);
    EXPECT_LE(history.episodes[0].pingsLost, 70);
}

TEST_F(RecorderClearing, AnOutageThatLastsWithoutNewsIsWrittenAgain) {
    start();
    loop.advance(10);
    recorder.follow(stateOf(Trouble::down));
    recorder.clear();
    for (int second = 0; second < 70; ++second) {
        passSecond(); // there is no address to send anything to
    }

    const History history = kept();
    ASSERT_EQ(history.episodes.size(), 1U);
    EXPECT_EQ(history.episodes[0].start, after(10));
}

TEST_F(RecorderClearing, AnOnsetThatWasWrittenBeforeIsNoDegradation) {
    start();
    passSilent(5);
    recorder.follow(stateOf(Trouble::degraded));
    recorder.save();
    recorder.clear();
    passSilent(5);
    recorder.follow(stateOf(Trouble::down));

    ASSERT_EQ(kept().episodes.size(), 1U);
    EXPECT_EQ(kept().episodes[0].kind, Episode::Kind::outage);
}

TEST_F(RecorderClearing, APauseThatLastsBeginsThen) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    for (int second = 0; second < 90; ++second) {
        passSecond();
    }
    recorder.clear();
    for (int second = 0; second < 100; ++second) {
        passSecond();
    }
    recorder.resume();

    const History history = kept();
    ASSERT_EQ(history.gaps.size(), 1U);
    EXPECT_EQ(history.gaps[0].span, (Span{.from = after(100), .to = after(200)}));
}

TEST_F(RecorderClearing, ASleepAfterAHoldUpThatWasForgottenIsAGapOfItsOwn) {
    start();
    pass(10);
    loop.stall(100);
    recorder.tick(); // the hold-up waits, since it may turn out to be a sleep
    recorder.clear();
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(50);
    recorder.resume();

    const History history = kept();
    ASSERT_EQ(history.gaps.size(), 1U);
    EXPECT_EQ(history.gaps[0].span, (Span{.from = after(110), .to = after(160)}));
}

TEST_F(RecorderClearing, AForgottenGapStaysSoWhenTheClockIsSetBackIntoIt) {
    journal.setUntil(after(0));
    loop.setWallClock(begin + std::chrono::hours(2)); // as another system has left the clock of the machine
    start();
    pass(10);
    recorder.clear();
    loop.setWallClock(begin + std::chrono::minutes(30));
    pass(10);

    EXPECT_TRUE(kept().gaps.empty());
}

TEST_F(RecorderClearing, TellsThatSomethingMayBeLeft) {
    start();
    pass(10);
    journal.clearingFails = true;

    EXPECT_FALSE(recorder.clear());
}

TEST_F(RecorderClearing, WorksWithoutAStartAndWithoutAJournal) {
    start();
    pass(90);
    recorder.stop();
    EXPECT_TRUE(recorder.clear());
    EXPECT_TRUE(journal.read(test::recordedHost, {}).periods.empty());

    Recorder nowhere(loop, nullptr);
    EXPECT_TRUE(nowhere.clear());
}

TEST_F(RecorderClearing, ByAnotherProgramTakesAlongWhatWaitsHere) {
    start();
    pass(90);
    journal.clearByAnother();
    pass(60); // the next minute begins, and with it a writing
    pass(10);

    EXPECT_LE(pingsKept(), 41) << "pings of before were written back";
    EXPECT_GE(pingsKept(), 39);
    EXPECT_TRUE(kept().gaps.empty());
}

TEST_F(RecorderClearing, ByAnotherProgramCutsAnOutageThatLasts) {
    start();
    passSilent(20);
    recorder.follow(stateOf(Trouble::down));
    passSilent(50, false);
    journal.clearByAnother();
    passSilent(100, false);

    const History history = kept();
    ASSERT_EQ(history.episodes.size(), 1U);
    EXPECT_GE(history.episodes[0].start, after(70));
}

} // namespace
} // namespace tarnwick
