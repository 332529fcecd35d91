// How the monitor keeps the all-time figures: saving, resetting, and sharing the file with another process.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/MonitorWorld.h"
#include "tests/support/SystemCalls.h"

#include <fstream>
#include <gmock/gmock.h>

namespace tarnwick::simulation {

namespace {

using testing::IsEmpty;
using testing::Key;
using testing::UnorderedElementsAre;
using State = StatsRecorder::State;

constexpr auto otherHost = "192.0.2.2";

class MonitorStatisticsTest : public testing::Test, protected MonitorWorld {};

TEST_F(MonitorStatisticsTest, SavesTheHostsFiguresUnderItsName) {
    start();
    pass(4.5);

    monitor->saveStats();

    EXPECT_THAT(store().load(), UnorderedElementsAre(testing::Pair(host, monitor->measured().ledger.site())));
    EXPECT_EQ(monitor->measured().ledger.site().sent, 5);
}

TEST_F(MonitorStatisticsTest, AHostWithoutAnyCountIsNotWritten) {
    setUnknownHost(host);
    start();

    monitor->saveStats();

    EXPECT_THAT(store().load(), IsEmpty());
}

TEST_F(MonitorStatisticsTest, AHostWithoutAnyCountIsLeftOutOfAnOldFile) {
    ASSERT_FALSE(store().save({{host, {}}, {otherHost, {.sent = 3}}}));
    setUnknownHost(host);
    start();

    monitor->saveStats();

    EXPECT_THAT(store().load(), UnorderedElementsAre(Key(otherHost)));
}

TEST_F(MonitorStatisticsTest, TheNextRunGoesOnFromTheSavedFigures) {
    start();
    pass(4.5);
    end();

    start();

    EXPECT_EQ(monitor->measured().ledger.site().sent, 6);
    EXPECT_EQ(monitor->measured().ledger.session().sent, 1);
}

TEST_F(MonitorStatisticsTest, OnlyASaveThatIsToOutliveAPowerCutWaitsForTheDisk) {
    start();
    test::flushes = 0;

    pass(45);
    EXPECT_GT(store().load()[host].sent, 0);
    EXPECT_EQ(test::flushes, 0);

    monitor->saveStats();
    EXPECT_EQ(test::flushes, 1);
}

TEST_F(MonitorStatisticsTest, AFailureToSaveIsIgnoredAndTheNextSaveTriesAgain) {
    start();
    pass(4.5);
    const std::filesystem::path inTheWay = statsFile().string() + ".new";
    std::filesystem::create_directories(inTheWay);

    monitor->saveStats();
    EXPECT_EQ(monitor->reading().startError, std::nullopt);
    EXPECT_EQ(monitor->reading().lastError, std::nullopt);
    std::filesystem::remove(inTheWay);
    monitor->saveStats();

    EXPECT_EQ(store().load().at(host).sent, 5);
}

TEST_F(MonitorStatisticsTest, AnUnreadableFileDoesNotKeepItFromCounting) {
    std::filesystem::create_directories(statsFile().parent_path());
    std::ofstream(statsFile()) << "{ no figures";

    start();
    pass(4.5);

    EXPECT_EQ(monitor->measured().ledger.site().sent, 5);
}

TEST_F(MonitorStatisticsTest, ResettingTheSessionLeavesTheAllTimeFigures) {
    start();
    pass(4.5);

    monitor->resetSessionStats();

    EXPECT_EQ(monitor->measured().ledger.session(), StatCounter());
    EXPECT_EQ(monitor->measured().ledger.site().sent, 5);
}

TEST_F(MonitorStatisticsTest, ResettingTheSessionKeepsPingsInFlightOutOfIt) {
    answerAfter(0.75);
    start();
    pass(0.5);

    monitor->resetSessionStats();
    pass(0.25);

    EXPECT_EQ(monitor->measured().ledger.session(), StatCounter());
    EXPECT_EQ(monitor->measured().ledger.site().replied, 1);
}

TEST_F(MonitorStatisticsTest, ResettingTheAllTimeFiguresIsStoredAtOnceForThisHostOnly) {
    ASSERT_FALSE(store().save({{host, {.sent = 7}}, {otherHost, {.sent = 3}}}));
    start();
    pass(4.5);

    monitor->resetAllTimeStats();

    EXPECT_THAT(store().load(), UnorderedElementsAre(Key(otherHost)));
    EXPECT_EQ(monitor->measured().ledger.site(), StatCounter());
    EXPECT_EQ(monitor->measured().ledger.session().sent, 5);
}

// Two processes with one file.

class TwoMonitorsTest : public MonitorStatisticsTest {
protected:
    TwoMonitorsTest() {
        start();
        pass(9.5);
        other.start();
        other.pass(4.5);
    }

    MonitorWorld other{folder};
};

TEST_F(TwoMonitorsTest, TheFirstRecordsAndTheSecondKnowsIt) {
    EXPECT_EQ(monitor->reading().recording, State::records);
    EXPECT_EQ(other.monitor->reading().recording, State::otherRecords);
}

TEST_F(TwoMonitorsTest, TheSecondWritesNothing) {
    other.monitor->saveStats();

    EXPECT_FALSE(std::filesystem::exists(statsFile()));
}

TEST_F(TwoMonitorsTest, TheSecondShowsTheFiguresOfTheFile) {
    monitor->saveStats();

    MonitorWorld third(folder);
    third.network.setHangingHost(host);
    third.start();

    EXPECT_EQ(third.monitor->measured().ledger.site().sent, 10);
}

TEST_F(TwoMonitorsTest, TheSecondTakesOverAfterTheFirstHasEnded) {
    end();

    other.monitor->saveStats();

    EXPECT_EQ(other.monitor->reading().recording, State::records);
    EXPECT_EQ(other.monitor->measured().ledger.site().sent, 10);
    EXPECT_EQ(other.monitor->measured().ledger.session().sent, 5);
}

TEST_F(TwoMonitorsTest, AfterTheTakeoverTheSecondCountsOnFromTheFile) {
    end();
    other.monitor->saveStats();

    other.pass(3);
    other.end();

    EXPECT_EQ(store().load().at(host).sent, 13);
}

TEST_F(TwoMonitorsTest, TheTakeoverHappensAtARegularSave) {
    end();

    other.pass(20);

    EXPECT_EQ(other.monitor->reading().recording, State::records);
}

TEST_F(TwoMonitorsTest, AFirstThatWasKilledLeavesWhatItHadSaved) {
    monitor->saveStats();
    pass(5);
    kill();

    other.monitor->saveStats();
    other.end();

    EXPECT_EQ(store().load().at(host).sent, 10);
}

TEST_F(TwoMonitorsTest, AHostChangeWhileTheOtherRecordsWritesNothing) {
    monitor->saveStats();

    other.monitor->setHostname(otherHost);
    other.pass(4.5);
    other.end();

    EXPECT_THAT(store().load(), UnorderedElementsAre(Key(host)));
}

TEST_F(TwoMonitorsTest, ATakeoverAtAHostChangeShowsTheNewHostsFiguresFromTheFile) {
    pass(1);
    monitor->setHostname(otherHost);
    pass(6.5);
    end();

    other.monitor->setHostname(otherHost);

    EXPECT_EQ(other.monitor->reading().recording, State::records);
    EXPECT_EQ(other.monitor->measured().ledger.site().sent, 7);
    other.end();
    EXPECT_EQ(store().load().at(host).sent, 11);
}

TEST_F(TwoMonitorsTest, AnAllTimeResetThatComesWithATakeoverIsStored) {
    end();

    other.monitor->resetAllTimeStats();
    other.end();

    EXPECT_THAT(store().load(), IsEmpty());
}

TEST_F(TwoMonitorsTest, WhereNothingCanBeWrittenTheMonitorSaysSoAndRecovers) {
    MonitorWorld blocked;
    const auto inTheWay = blocked.statsFile().parent_path();
    std::ofstream(inTheWay) << "a file where the folder should be";
    blocked.start();
    blocked.pass(4.5);
    ASSERT_EQ(blocked.monitor->reading().recording, State::cannotRecord);

    std::filesystem::remove(inTheWay);
    blocked.monitor->saveStats();

    EXPECT_EQ(blocked.monitor->reading().recording, State::records);
    EXPECT_EQ(blocked.store().load().at(host).sent, 5);
}

} // namespace

} // namespace tarnwick::simulation
