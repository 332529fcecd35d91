// How pings become minutes of the journal.
#include "tests/app/Recorder/RecorderWorld.h"

namespace tarnwick {
namespace {

class RecorderPings : public test::RecorderWorld {
protected:
    RecorderPings() { recorder.start(test::recordedHost); }
};

TEST_F(RecorderPings, AreBookedByMinutes) {
    pass(150);

    const History history = kept();
    ASSERT_EQ(history.periods.size(), 3U);
    EXPECT_EQ(history.periods[0].start, after(0));
    EXPECT_EQ(history.periods[0].figures.sent, 60);
    EXPECT_EQ(history.periods[0].figures.replied, 60);
    EXPECT_NEAR(history.periods[0].figures.watchedSeconds, 60, 1);
    EXPECT_EQ(history.periods[1].figures.sent, 60);
    EXPECT_NEAR(history.periods[1].figures.watchedSeconds, 60, 1);
    EXPECT_EQ(history.periods[2].figures.sent, 30);
    EXPECT_EQ(history.until, after(150));
}

TEST_F(RecorderPings, OfADayAreWatchedThroughout) {
    pass(86'400);

    double watched = 0;
    for (const Period& minute : kept().periods) {
        watched += minute.figures.watchedSeconds;
    }
    EXPECT_NEAR(watched, 86'400, 1);
}

TEST_F(RecorderPings, ThatAreAnsweredTooLateAreLost) {
    recorder.pingSent(1, true);
    recorder.pingReplied(1, 5000, false);
    recorder.pingLost(1); // once is enough

    const PeriodFigures figures = kept().periods.at(0).figures;
    EXPECT_EQ(figures.replied, 0);
    EXPECT_EQ(figures.lost, 1);
    EXPECT_EQ(figures.slowestMs, 0);
}

TEST_F(RecorderPings, SettleInTheMinuteInWhichTheyWereSent) {
    loop.advance(59);
    recorder.tick();
    recorder.pingSent(1, true);
    recorder.pingSent(2, true);
    pass(5);
    recorder.pingReplied(1, 30, true);
    recorder.pingLost(2);

    const History history = kept();
    EXPECT_EQ(history.periods.at(0).figures.sent, 3); // one of them is the fixture's
    EXPECT_EQ(history.periods.at(0).figures.lost, 1);
    EXPECT_EQ(history.periods.at(0).figures.slowestMs, 30);
    EXPECT_EQ(history.periods.at(1).figures.lost, 0);
}

TEST_F(RecorderPings, SentWhileDownAreInNoPeriod) {
    recorder.pingSent(1, false);
    recorder.pingLost(1);
    recorder.pingSent(2, false);
    recorder.pingReplied(2, 20, true);

    EXPECT_TRUE(kept().periods.empty());
}

TEST_F(RecorderPings, OfAnotherHostAreKeptApart) {
    pass(10);
    recorder.setHost("two.example");
    pass(20);

    EXPECT_EQ(kept().periods.at(0).figures.sent, 10);
    EXPECT_EQ(kept("two.example").periods.at(0).figures.sent, 20);
}

TEST_F(RecorderPings, OfTheHostBeforeSettleNowhere) {
    recorder.pingSent(1, true);
    recorder.setHost("two.example");
    recorder.pingReplied(1, 20, true);

    EXPECT_EQ(kept().periods.at(0).figures.replied, 0);
    EXPECT_TRUE(kept("two.example").periods.empty());
}

TEST_F(RecorderPings, AreNotRecordedAfterTheStop) {
    pass(10);
    recorder.stop();
    const std::size_t batches = journal.batches.size();
    pass(100);
    recorder.interrupt(Gap::Kind::asleep);
    recorder.resume();
    recorder.follow(stateOf(Trouble::down));
    recorder.setHost("two.example");

    EXPECT_EQ(kept().periods.at(0).figures.sent, 10);
    EXPECT_EQ(journal.batches.size(), batches);
}

TEST(RecorderBefore, TheStartNothingIsRecordedNorOpened) {
    simulation::VirtualRunLoop loop;
    simulation::RecordingJournal journal;
    Recorder recorder(loop, &journal);
    recorder.pingSent(1, true);
    recorder.pingReplied(1, 20, true);
    loop.advance(100);
    recorder.tick();
    recorder.save();
    recorder.stop();

    EXPECT_EQ(journal.opened, 0);
    EXPECT_TRUE(journal.batches.empty());
}

TEST(RecorderWithout, AJournalRecordsNothing) {
    simulation::VirtualRunLoop loop;
    Recorder recorder(loop, nullptr);
    recorder.start(test::recordedHost);
    recorder.pingSent(1, true);
    recorder.tick();
    recorder.follow({.trouble = Trouble::down});
    recorder.stop();

    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(recorder.problem(), "");
}

TEST_F(RecorderPings, JitterDoesNotReachOverAnInterruption) {
    recorder.pingSent(1, true);
    recorder.pingReplied(1, 20, true);
    recorder.interrupt(Gap::Kind::paused);
    recorder.resume();
    recorder.pingSent(2, true);
    recorder.pingReplied(2, 90, true);

    EXPECT_EQ(kept().periods.at(0).figures.jitterMs(), std::nullopt);
}

} // namespace
} // namespace tarnwick
