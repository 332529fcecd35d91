// What the monitor tells the user beside the figures, and when it takes that back.
#include "app/Monitor/Monitor.h"
#include "core/Storage/WriterLock.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MonitorNoticesTest : public testing::Test, protected WatchedMonitor {
protected:
    void forbidPinging() {
        network.setSocketError(AF_INET, "Permission denied");
        missingPermission = "the command";
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> texts;
        for (const Notice& notice : monitor.reading().notices) {
            texts.push_back(notice.line());
        }
        return texts;
    }
};

const std::string mayNotPing = "This user may not ping yet. Allow it with: the command";
const std::string otherRecords = "Another Tarnwick records the statistics; this one records nothing.";

} // namespace

TEST_F(MonitorNoticesTest, ThereIsNoneWhileAllIsWell) {
    watchFor(60);

    EXPECT_THAT(lines(), IsEmpty());
}

// Permission to ping.

TEST_F(MonitorNoticesTest, ASocketThatIsNotAllowedIsToldBeforeTheConnectionIsDown) {
    forbidPinging();

    watchFor(0.5);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::starting);
    EXPECT_THAT(lines(), ElementsAre(mayNotPing));
}

TEST_F(MonitorNoticesTest, AskingForThePermissionInVainIsTold) {
    forbidPinging();
    watchFor(0.5);

    monitor.allowingFailed();

    EXPECT_THAT(
        lines(), ElementsAre("This user may not ping yet, and the desktop did not allow it. Allow it with: "
                             "the command"));
    monitor.tryAgain();
    EXPECT_THAT(lines(), ElementsAre(mayNotPing));
}

TEST_F(MonitorNoticesTest, StatisticsThatWereKeptAsideAreTold) {
    test::writeFile(statistics, "no JSON");
    watchFor(5);

    monitor.saveStats();

    EXPECT_THAT(
        lines(), ElementsAre(
                     "The statistics could not be read, so they count anew. The old file is kept as “"
                     + statistics.string() + ".unreadable”."));
}

TEST_F(MonitorNoticesTest, PingingBeginsAndTheNoticeGoesOnceTheUserMayPing) {
    forbidPinging();
    watchFor(120);
    ASSERT_EQ(monitor.reading().status, Monitor::Status::down);
    ASSERT_THAT(lines(), ElementsAre(mayNotPing));

    network.setSocketError(AF_INET, std::nullopt);
    missingPermission.reset();
    loop.advance(60);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, TryingAgainStartsPingingWithinTwoSeconds) {
    forbidPinging();
    watchFor(300);
    network.setSocketError(AF_INET, std::nullopt);
    missingPermission.reset();

    monitor.tryAgain();
    loop.advance(2.1);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, ThePermissionIsAskedForAtAnAttemptToPingOnly) {
    forbidPinging();
    watchFor(0.5);

    missingPermission.reset();
    prefs.setSlowPingThresholdMs(prefs.slowPingThresholdMs() + 1);
    loop.advance(0);

    EXPECT_THAT(lines(), ElementsAre(mayNotPing));
}

TEST_F(MonitorNoticesTest, AHostThatIsNotFoundSaysNothingOfThePermission) {
    prefs.setHostname("no.such.host");
    network.setHost("no.such.host", PingError::resolution("Name or service not known"));
    missingPermission = "the command";

    watchFor(60);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::down);
    EXPECT_THAT(lines(), IsEmpty());
}

// Recording.

TEST_F(MonitorNoticesTest, AnotherProgramThatRecordsIsToldUntilItEnds) {
    auto other = std::make_unique<WriterLock>(statistics);
    ASSERT_EQ(other->acquire(), WriterLock::Attempt::taken);
    watchFor(5);
    EXPECT_THAT(lines(), ElementsAre(otherRecords));

    other.reset();
    loop.advance(25);

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, HostsThatThereIsNoRoomForAreTold) {
    StatsByHost many;
    for (std::size_t number = 0; number <= StatsStore::mostHosts; ++number) {
        many[std::to_string(number) + ".test"].sent = 100;
    }
    ASSERT_FALSE(StatsStore{statistics}.save(many));

    watchFor(25);

    EXPECT_THAT(
        lines(),
        ElementsAre("There are too many hosts: the statistics of those pinged least (2) are not stored."));
}

TEST_F(MonitorNoticesTest, AFailedWriteIsToldUntilAnotherSucceeds) {
    // A folder in the place of the file that is written first.
    const std::filesystem::path inTheWay = statistics.string() + ".new";
    std::filesystem::create_directories(inTheWay);
    watchFor(25);
    EXPECT_THAT(lines(), ElementsAre("The statistics are not stored: Is a directory."));

    std::filesystem::remove(inTheWay);
    loop.advance(20);

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, AFolderThatCannotBeWrittenIsTold) {
    test::writeFile(folder.path() / "file", "");
    Monitor unstored(
        prefs, {.loop = loop,
                .network = network,
                .path = path,
                .sleep = sleep,
                .notifications = notifications,
                .store = {folder.path() / "file" / "stats.json"}});
    unstored.start();

    ASSERT_EQ(unstored.reading().notices.size(), 1U);
    EXPECT_EQ(
        unstored.reading().notices[0].text,
        "The statistics are not stored: their folder can’t be written or locked.");
}

// What the rest of the program knows.

TEST_F(MonitorNoticesTest, ANoticeIsThereUntilItIsCleared) {
    watchFor(1);

    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "No panel"});
    EXPECT_THAT(lines(), ElementsAre("No panel"));
    loop.advance(60);
    EXPECT_THAT(lines(), ElementsAre("No panel"));

    monitor.clearNotice(Notice::Kind::noPanel);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, ANoticeTakesThePlaceOfTheLastOneOfItsKind) {
    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "first"});
    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "other"});

    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "second"});

    EXPECT_THAT(lines(), ElementsAre("second", "other"));
}

TEST_F(MonitorNoticesTest, MistakesInTheSettingsAreToldUntilThereAreNone) {
    monitor.setSettingsMistakes({"first", "second"});
    EXPECT_THAT(lines(), ElementsAre("first (and 1 more)"));

    monitor.setSettingsMistakes({});
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(MonitorNoticesTest, ANoticeStaysWhenTheHostChanges) {
    watchFor(1);
    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "No panel"});

    monitor.setHostname("192.0.2.9");
    loop.advance(1);

    EXPECT_THAT(lines(), ElementsAre("No panel"));
}

} // namespace tarnwick
