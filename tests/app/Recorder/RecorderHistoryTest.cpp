// What the recorder tells of the past: the journal, and what is not in it yet.
#include "tests/app/Recorder/RecorderWorld.h"

#include <gmock/gmock.h>

namespace tarnwick {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class RecorderHistory : public test::RecorderWorld {
protected:
    RecorderHistory() { recorder.start(test::recordedHost); }

    [[nodiscard]] History known(const std::string& host = test::recordedHost) const {
        return recorder.history(host, {.from = after(-3600), .to = after(3600)});
    }

    [[nodiscard]] static std::int64_t sentIn(const History& history) {
        std::int64_t sent = 0;
        for (const Period& period : history.periods) {
            sent += period.figures.sent;
        }
        return sent;
    }
};

TEST_F(RecorderHistory, GoesToThisMomentAndWritesNothing) {
    pass(150);
    const std::size_t batches = journal.batches.size();
    const int opened = journal.opened;

    const History history = known();

    ASSERT_THAT(history.periods, SizeIs(3));
    EXPECT_EQ(history.periods[2].figures.sent, 30);
    EXPECT_EQ(sentIn(history), 150);
    EXPECT_EQ(history.until, after(150));
    EXPECT_EQ(journal.batches.size(), batches);
    EXPECT_EQ(journal.opened, opened);
    EXPECT_EQ(sentIn(kept()), 150); // nothing was taken away by looking
}

TEST_F(RecorderHistory, HasOnePeriodForAMinuteThatIsWrittenInPart) {
    pass(30);
    recorder.save();
    pass(20, 70);

    const History history = known();

    ASSERT_THAT(history.periods, SizeIs(1));
    EXPECT_EQ(history.periods[0].figures.sent, 50);
    EXPECT_EQ(history.periods[0].figures.slowestMs, 70);
}

TEST_F(RecorderHistory, HoldsAnOutageThatLasts) {
    pass(70);
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    passSilent(20, false);

    const History history = known();

    ASSERT_THAT(history.episodes, SizeIs(1));
    EXPECT_EQ(history.episodes[0].kind, Episode::Kind::outage);
    EXPECT_EQ(history.episodes[0].end, std::nullopt);
    EXPECT_EQ(history.episodes[0].pingsLost, 26); // the journal knows of fewer
    EXPECT_EQ(history.until, after(100));
}

TEST_F(RecorderHistory, HoldsADegradationThatIsNotWrittenYet) {
    pass(70);
    recorder.follow(stateOf(Trouble::degraded));
    pass(10);

    EXPECT_THAT(known().episodes, SizeIs(1));
    EXPECT_THAT(journal.read(test::recordedHost, {}).episodes, IsEmpty());
}

TEST_F(RecorderHistory, HoldsAGapThatLasts) {
    pass(70);
    recorder.interrupt(Gap::Kind::paused);
    loop.advance(600);

    const History history = known();

    ASSERT_THAT(history.gaps, SizeIs(1));
    EXPECT_EQ(history.gaps[0].kind, Gap::Kind::paused);
    EXPECT_EQ(history.gaps[0].span, (Span{.from = after(70), .to = after(670)}));
    EXPECT_EQ(history.until, after(670));
}

TEST_F(RecorderHistory, HoldsWhatAFullDiskDoesNotTake) {
    pass(70);
    journal.setState(Journal::State::cannotWrite);
    loop.advance(30); // a pause
    pass(200);

    const History history = known();

    EXPECT_EQ(sentIn(history), 270);
    EXPECT_THAT(history.gaps, SizeIs(1));
    EXPECT_TRUE(std::ranges::is_sorted(history.periods, {}, &Period::start));
}

TEST_F(RecorderHistory, IsOfOneHostWithTheGapsOfAll) {
    journal.setState(Journal::State::cannotWrite);
    pass(70);
    recorder.interrupt(Gap::Kind::asleep);
    loop.advance(60);
    recorder.resume();
    recorder.setHost("two.example");
    pass(20);

    EXPECT_EQ(sentIn(known()), 70);
    EXPECT_THAT(known().gaps, SizeIs(1));
    EXPECT_EQ(sentIn(known("two.example")), 20);
    EXPECT_THAT(known("two.example").gaps, SizeIs(1));
    EXPECT_EQ(sentIn(known("three.example")), 0);
}

TEST_F(RecorderHistory, IsInOrderAlsoAfterTheClockWasSetBack) {
    pass(130);
    journal.setState(Journal::State::cannotWrite); // so that a minute waits that is older than written ones
    loop.setWallClock(begin - std::chrono::minutes(10));
    pass(70);

    EXPECT_THAT(known().periods, SizeIs(5));
    EXPECT_TRUE(std::ranges::is_sorted(known().periods, {}, &Period::start));
}

TEST_F(RecorderHistory, OfAnotherWriterIsWhatItHasWritten) {
    journal.setUntil(after(0));
    pass(70);
    journal.setState(Journal::State::otherWrites);
    pass(30);

    const History history = known();

    EXPECT_EQ(sentIn(history), sentIn(journal.read(test::recordedHost, {})));
    EXPECT_EQ(history.until, journal.until());
}

TEST_F(RecorderHistory, IsWhatIsWrittenOnceNothingIsRecorded) {
    pass(70);
    recorder.stop();
    pass(100);

    EXPECT_EQ(sentIn(known()), 70);
    EXPECT_EQ(known().until, after(70));
}

TEST(RecorderHistoryWithout, AJournalIsEmpty) {
    simulation::VirtualRunLoop loop;
    Recorder recorder(loop, nullptr);
    recorder.start(test::recordedHost);
    recorder.pingSent(1, true);

    EXPECT_THAT(recorder.history(test::recordedHost, {}).periods, IsEmpty());
}

} // namespace
} // namespace tarnwick
