// Saving where a file can't be read or written, and for how long. The rest: cases/statistics.txt.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/MonitorWorld.h"
#include "tests/support/SystemCalls.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick::simulation {

namespace {

using State = StatsRecorder::State;

class MonitorStatisticsTest : public testing::Test, protected MonitorWorld {};

TEST_F(MonitorStatisticsTest, OnlyASaveThatIsToOutliveAPowerCutWaitsForTheDisk) {
    start();
    const auto hasFlushed = testing::Contains(testing::StartsWith("flush "));
    test::diskCalls.clear();

    pass(45);
    EXPECT_GT(store().load()[host].sent, 0);
    EXPECT_THAT(test::diskCalls, testing::Not(hasFlushed));

    monitor->saveStats();
    EXPECT_THAT(test::diskCalls, hasFlushed);
}

TEST_F(MonitorStatisticsTest, WithoutLocksAProgramThatIsAloneRecords) {
    test::lockError = ENOLCK;
    start();
    ASSERT_EQ(test::lockError, 0);
    EXPECT_EQ(monitor->reading().recording, State::records);
    pass(4.5);

    monitor->saveStats();

    EXPECT_EQ(store().load().at(host).sent, 5);
}

TEST_F(MonitorStatisticsTest, WithoutLocksOnlyOneOfTwoRecords) {
    test::lockError = ENOLCK;
    start();
    StatsRecorder second(store());
    test::lockError = ENOLCK;
    second.load();
    ASSERT_EQ(test::lockError, 0);
    EXPECT_EQ(second.state(), State::otherRecords);

    monitor.reset();
    test::lockError = ENOLCK;
    second.save(host, {.sent = 1}, FileStore::Durability::crash);

    EXPECT_EQ(second.state(), State::records);
}

TEST_F(MonitorStatisticsTest, AFailureToSaveIsIgnoredAndTheNextSaveTriesAgain) {
    start();
    pass(4.5);
    const std::filesystem::path inTheWay = statsFile().string() + ".new";
    std::filesystem::create_directories(inTheWay);

    monitor->saveStats();
    EXPECT_EQ(monitor->reading().startError, std::nullopt);
    EXPECT_EQ(monitor->reading().lastError(), std::nullopt);
    std::filesystem::remove(inTheWay);
    monitor->saveStats();

    EXPECT_EQ(store().load().at(host).sent, 5);
}

TEST_F(MonitorStatisticsTest, AnUnreadableFileDoesNotKeepItFromCounting) {
    std::filesystem::create_directories(statsFile().parent_path());
    std::ofstream(statsFile()) << "{ no figures";

    start();
    pass(4.5);

    EXPECT_EQ(monitor->reading().site.sent, 5);
}

TEST_F(MonitorStatisticsTest, WhereNothingCanBeWrittenTheMonitorSaysSoAndRecovers) {
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
