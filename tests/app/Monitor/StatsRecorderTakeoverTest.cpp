// Two recorders with one file: one writes, the other takes over.
#include "tests/app/Monitor/StatsRecorderTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::Pair;
using testing::UnorderedElementsAre;
using Saved = StatsRecorder::Saved;
using State = StatsRecorder::State;

class StatsRecorderTakeoverTest : public StatsRecorderTest {};

TEST_F(StatsRecorderTakeoverTest, TheSecondOfTwoDoesNotRecord) {
    start(first);

    EXPECT_EQ(start(second).state(), State::otherRecords);
    EXPECT_EQ(first->state(), State::records);
}

TEST_F(StatsRecorderTakeoverTest, WhileAnotherRecordsNothingIsWritten) {
    start(first).save(host, sent(10), forTheCrash);
    start(second);

    EXPECT_EQ(second->save(host, sent(11), forTheCrash), Saved::kept);

    EXPECT_EQ(store.load().at(host), sent(10));
}

TEST_F(StatsRecorderTakeoverTest, WhileAnotherRecordsItCountsOnInMemory) {
    start(first).save(host, sent(10), forTheCrash);
    start(second).save(host, sent(11), forTheCrash);

    EXPECT_EQ(second->counterOf(host), sent(11));
}

TEST_F(StatsRecorderTakeoverTest, TakesOverFromTheFiguresOnDiskNeverOverThem) {
    start(first);
    start(second).save(host, sent(5), forTheCrash);
    first->save(host, sent(10), forTheCrash);
    first.reset();

    EXPECT_EQ(second->save(host, sent(6), forTheCrash), Saved::tookOver);

    EXPECT_EQ(second->state(), State::records);
    EXPECT_EQ(second->counterOf(host), sent(10));
    EXPECT_EQ(store.load().at(host), sent(10));
}

TEST_F(StatsRecorderTakeoverTest, AfterATakeoverItWritesWhatItIsTold) {
    start(first).save(host, sent(10), forTheCrash);
    start(second);
    first.reset();
    second->save(host, sent(1), forTheCrash);

    EXPECT_EQ(second->save(host, sent(12), forTheCrash), Saved::kept);

    EXPECT_EQ(store.load().at(host), sent(12));
}

TEST_F(StatsRecorderTakeoverTest, FiguresTakenOverAreWrittenAgainToOutliveAPowerCut) {
    start(first).save(host, sent(10), forThePowerCut);
    std::filesystem::remove(store.url.string() + ".lock");
    start(second).save(host, sent(11), forTheCrash);
    second.reset();
    ASSERT_EQ(first->save(host, sent(12), forThePowerCut), Saved::tookOver);
    const ino_t takenOver = fileNumber();

    first->save(host, sent(11), forThePowerCut);

    EXPECT_NE(fileNumber(), takenOver);
}

TEST_F(StatsRecorderTakeoverTest, FiguresAreTakenOverOnce) {
    start(first).save(host, sent(10), forTheCrash);
    std::filesystem::remove(store.url.string() + ".lock");
    start(second).save(host, sent(11), forTheCrash);
    second.reset();
    ASSERT_EQ(first->save(host, sent(12), forTheCrash), Saved::tookOver);
    std::filesystem::remove(store.url.string() + ".lock");

    EXPECT_EQ(first->save(host, sent(12), forTheCrash), Saved::kept);

    EXPECT_EQ(store.load().at(host), sent(12));
}

TEST_F(StatsRecorderTakeoverTest, NothingIsTakenOverFromTheOwnFileOfAHostWithoutCounts) {
    start(first).save(host, sent(10), forTheCrash);
    first->save(otherHost, {}, forTheCrash);
    std::filesystem::remove(store.url.string() + ".lock");

    EXPECT_EQ(first->save(otherHost, sent(1), forTheCrash), Saved::kept);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(10)), Pair(otherHost, sent(1))));
}

TEST_F(StatsRecorderTakeoverTest, ATakeoverDropsTheFiguresOfOtherHosts) {
    start(first).save(host, sent(10), forTheCrash);
    start(second).save(otherHost, sent(3), forTheCrash);
    first.reset();

    second->save(host, sent(1), forTheCrash);
    second->save(host, sent(11), forTheCrash);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(11))));
}

TEST_F(StatsRecorderTakeoverTest, ATakeoverOfAnUnreadableFileKeepsItAside) {
    start(first);
    start(second);
    writeFile("no JSON");
    first.reset();
    second->save(host, sent(1), forTheCrash);

    second->save(host, sent(2), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), "no JSON");
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTakeoverTest, ATakeoverIsMadeUpForWhenReadingFailedForAMoment) {
    start(first).save(host, sent(10), forTheCrash);
    start(second);
    first.reset();
    letReadingFail();
    second->save(host, sent(1), forTheCrash);
    letReadingSucceed();

    EXPECT_EQ(second->save(host, sent(2), forTheCrash), Saved::tookOver);

    EXPECT_EQ(second->counterOf(host), sent(10));
    EXPECT_EQ(store.load().at(host), sent(10));
}

TEST_F(StatsRecorderTakeoverTest, TheOneThatEndsLastDoesNotUndoTheOneThatTookOver) {
    std::optional<StatsRecorder> third;
    start(first).save(host, sent(10), forTheCrash);
    start(second);
    start(third);
    first.reset();
    second->save(host, sent(1), forTheCrash);
    second->save(host, sent(20), forTheCrash);

    EXPECT_EQ(third->save(host, sent(2), forTheCrash), Saved::kept);
    EXPECT_EQ(third->state(), State::otherRecords);
    EXPECT_EQ(store.load().at(host), sent(20));
}

} // namespace

} // namespace tarnwick
