// The terminal program around the model: what it shows when, and what it tells beside that.
#include "app/Watch/Watch.h"

#include "core/Storage/StatsLock.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What a presentation was asked to do.
struct Shown {
    int times = 0;
    int timesResized = 0;
    int timesNoted = 0;
    std::vector<std::string> notes;
    std::vector<std::int64_t> lost; ///< pings, at each showing
};

class RecordingPresentation final : public Presentation {
public:
    RecordingPresentation(Shown& shown, const Monitor& monitor) : shown_(shown), monitor_(monitor) {}

    void show(double /*judgedAt*/) override {
        ++shown_.times;
        shown_.lost.push_back(monitor_.reading().session.lost);
    }

    void setNotes(const std::vector<std::string>& notes) override {
        ++shown_.timesNoted;
        shown_.notes = notes;
    }

    void windowResized() override { ++shown_.timesResized; }

private:
    Shown& shown_;
    const Monitor& monitor_;
};

class WatchTest : public testing::Test, protected WatchedMonitor {
protected:
    void startAndWait(double seconds) {
        watch_.start();
        loop.advance(seconds);
    }

    Shown shown_;
    std::optional<std::string> missingPermission_;
    Watch watch_{
        {.loop = loop, .monitor = monitor, .missingPingPermission = [this] { return missingPermission_; }},
        std::make_unique<RecordingPresentation>(shown_, monitor)};
};

} // namespace

TEST_F(WatchTest, ShowsTheModelAtOnceAndThenAfterEveryTick) {
    watch_.start();
    EXPECT_EQ(shown_.times, 1);

    loop.advance(5.5);
    EXPECT_EQ(shown_.times, 6);
}

TEST_F(WatchTest, ShowsWhatTheTickHasJustEvaluated) {
    fallSilent();
    startAndWait(6.5);

    EXPECT_THAT(shown_.lost, ElementsAre(0, 0, 0, 0, 0, 1, 2));
}

TEST_F(WatchTest, HasNothingToSayWhileAllIsWell) {
    startAndWait(60);

    EXPECT_EQ(shown_.timesNoted, 0);
}

TEST_F(WatchTest, PassesTheWindowsNewSizeOn) {
    startAndWait(1);

    watch_.windowResized();

    EXPECT_EQ(shown_.timesResized, 1);
}

TEST_F(WatchTest, TheModelMayOutliveIt) {
    auto shortLived = std::make_unique<Watch>(
        Watch::Needs{.loop = loop, .monitor = monitor, .missingPingPermission = [] { return std::nullopt; }},
        std::make_unique<RecordingPresentation>(shown_, monitor));
    shortLived->start();
    loop.advance(1.5);
    shortLived.reset();

    loop.advance(10);

    EXPECT_EQ(shown_.times, 2);
}

// Permission to ping.

TEST_F(WatchTest, SaysWhatToChangeWhenThisUserMayNotPing) {
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\"";

    startAndWait(2);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr(*missingPermission_)));
}

TEST_F(WatchTest, SaysItWithoutWaitingForTheConnectionToCountAsDown) {
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "the command";

    startAndWait(0.5);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::starting);
    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("the command")));
}

TEST_F(WatchTest, RecoversByItselfOnceTheUserMayPingAndTakesTheNoteBack) {
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "the command";
    startAndWait(120);
    ASSERT_EQ(monitor.reading().status, Monitor::Status::down);

    network.setSocketError(AF_INET, std::nullopt);
    missingPermission_.reset();
    loop.advance(60);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
    EXPECT_THAT(shown_.notes, IsEmpty());
}

TEST_F(WatchTest, KeepsTheNoteUntilTheNextAttemptToPing) {
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "the command";
    startAndWait(2);
    ASSERT_EQ(shown_.timesNoted, 1);

    missingPermission_.reset();
    prefs.setSlowPingThresholdMs(prefs.slowPingThresholdMs() + 1);
    loop.advance(0);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("the command")));
}

TEST_F(WatchTest, AnotherObstacleToASocketIsToldInTheSystemsWords) {
    network.setSocketError(AF_INET, "Too many open files");

    startAndWait(2);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("Too many open files")));
}

TEST_F(WatchTest, AHostThatIsNotFoundNeedsNoNote) {
    prefs.setHostname("no.such.host");
    network.setHost("no.such.host", PingError::resolution("Name or service not known"));
    missingPermission_ = "the command";

    startAndWait(60);

    EXPECT_EQ(monitor.reading().status, Monitor::Status::down);
    EXPECT_THAT(shown_.notes, IsEmpty());
}

TEST_F(WatchTest, SaysTheSameThingOnlyOnce) {
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "the command";

    startAndWait(300);

    EXPECT_EQ(shown_.timesNoted, 1);
}

// Recording.

TEST_F(WatchTest, SaysInOneLineThatAnotherProgramRecordsTheStatistics) {
    StatsLock other(statistics);
    ASSERT_EQ(other.acquire(), StatsLock::Attempt::taken);

    startAndWait(1);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("Another Tarnwick records the statistics")));
}

TEST_F(WatchTest, TakesTheNoteBackWhenItTakesTheRecordingOver) {
    auto other = std::make_unique<StatsLock>(statistics);
    ASSERT_EQ(other->acquire(), StatsLock::Attempt::taken);
    startAndWait(5);
    ASSERT_FALSE(shown_.notes.empty());

    other.reset();
    loop.advance(25);

    EXPECT_EQ(monitor.reading().recording, StatsRecorder::State::records);
    EXPECT_THAT(shown_.notes, IsEmpty());
}

TEST_F(WatchTest, SaysThatTheStatisticsCannotBeStoredWhereNothingCanBeWritten) {
    test::writeFile(folder.path() / "file", "");
    Monitor unstored(
        prefs, {.loop = loop,
                .network = network,
                .path = path,
                .sleep = sleep,
                .notifications = notifications,
                .store = {folder.path() / "file" / "stats.json"}});
    Watch watch(
        {.loop = loop, .monitor = unstored, .missingPingPermission = [] { return std::nullopt; }},
        std::make_unique<RecordingPresentation>(shown_, unstored));

    watch.start();
    loop.advance(1);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("are not stored")));
}

TEST_F(WatchTest, TellsOfTheObstacleToPingingBeforeThatToRecording) {
    StatsLock other(statistics);
    ASSERT_EQ(other.acquire(), StatsLock::Attempt::taken);
    network.setSocketError(AF_INET, "Permission denied");
    missingPermission_ = "the command";

    startAndWait(2);

    EXPECT_THAT(shown_.notes, ElementsAre(HasSubstr("the command"), HasSubstr("Another Tarnwick")));
}

} // namespace tarnwick
