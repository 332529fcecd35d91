// Sleep and wake as logind announces them, played by a peer, and as the clocks show them.
#include "tests/platform/bus/LogindSleepMonitorTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <optional>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// How many ends for writing this process has open.
struct PipeEnds {
    int inherited = 0; ///< by programs that are started from here
    int ours = 0;
};

int openFlags(const std::filesystem::path& descriptorInfo) {
    std::ifstream info(descriptorInfo);
    std::string word;
    while (info >> word && word != "flags:") {
    }
    int flags = 0;
    info >> std::oct >> flags;
    return flags;
}

PipeEnds openPipeEnds() {
    PipeEnds ends;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        std::error_code gone;
        const auto file = std::filesystem::read_symlink("/proc/self/fd" / entry.path().filename(), gone);
        const int flags = openFlags(entry.path());
        if (file.string().starts_with("pipe:") && (flags & O_ACCMODE) == O_WRONLY) {
            ++((flags & O_CLOEXEC) != 0 ? ends.ours : ends.inherited);
        }
    }
    return ends;
}

/// With a patience that a test can wait for.
class ImpatientSleepMonitorTest : public LogindSleepMonitorTest {
protected:
    ImpatientSleepMonitorTest() : LogindSleepMonitorTest(0.25) {}

    /// With a logind that has not let it wait.
    void startInVain(bool FakeLogind::* behavior) {
        addLogind();
        *logind_.*behavior = true;
        start();
        ASSERT_TRUE(runUntil([this] { return !logind_->requests().empty(); }));
    }
};

class UnhelpfulLogindTest : public ImpatientSleepMonitorTest,
                            public testing::WithParamInterface<bool FakeLogind::*> {};

} // namespace

TEST_F(LogindSleepMonitorTest, WhileAwakeSleepsAreAskedToWait) {
    ASSERT_TRUE(startWithLogind());

    ASSERT_EQ(logind_->requests().size(), 1U);
    const FakeLogind::Request& request = logind_->requests().front();
    EXPECT_EQ(request.what, "sleep");
    EXPECT_EQ(request.who, "Tarnwick");
    EXPECT_EQ(request.mode, "delay");
    EXPECT_FALSE(request.why.empty());
}

TEST_F(LogindSleepMonitorTest, TheSleepWaitsUntilTheHandlerHasRun) {
    ASSERT_TRUE(startWithLogind());

    logind_->announce(true);

    ASSERT_TRUE(runUntil([this] { return logind_->inhibitors() == 0; }));
    EXPECT_THAT(told_, ElementsAre("sleep"));
    EXPECT_EQ(inhibitorsWhileSaving_, 1);
}

TEST_F(LogindSleepMonitorTest, AfterTheSleepTheNextOneIsAskedToWait) {
    ASSERT_TRUE(startWithLogind());
    logind_->announce(true);
    ASSERT_TRUE(runUntil([this] { return logind_->inhibitors() == 0; }));

    logind_->announce(false);

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
    EXPECT_TRUE(runUntilInhibited());
}

TEST_F(LogindSleepMonitorTest, AfterASleepThatIsAnnouncedTwiceTheNextOneIsAskedToWait) {
    ASSERT_TRUE(startWithLogind());

    logind_->announce(true);
    logind_->announce(true);
    logind_->announce(false);
    logind_->announce(false);

    ASSERT_TRUE(runUntilTold({"sleep", "wake"}));
    EXPECT_TRUE(runUntilInhibited());
}

TEST_F(LogindSleepMonitorTest, AWakingWithoutASleepAsksForNothingMore) {
    ASSERT_TRUE(startWithLogind());

    logind_->announce(false);

    ASSERT_TRUE(runUntilAllHeard());
    EXPECT_EQ(logind_->inhibitors(), 1);
    EXPECT_EQ(logind_->requests().size(), 1U);
}

TEST_F(LogindSleepMonitorTest, ALogindThatComesLateIsHeard) {
    start();
    ASSERT_TRUE(runUntilConnected());

    addLogind();

    ASSERT_TRUE(runUntilInhibited());
    logind_->announce(true);
    EXPECT_TRUE(runUntilTold({"sleep"}));
}

TEST_F(LogindSleepMonitorTest, ARestartedLogindIsAskedToWaitToo) {
    ASSERT_TRUE(startWithLogind());
    removeLogind();

    addLogind();

    ASSERT_TRUE(runUntilInhibited());
    logind_->announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));
    EXPECT_TRUE(runUntil([this] { return logind_->inhibitors() == 0; }));
}

TEST_F(LogindSleepMonitorTest, ALogindThatEndsDuringASleepLeavesTheProgramAwake) {
    ASSERT_TRUE(startWithLogind());
    logind_->announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));

    removeLogind();

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, AnotherLogindThatTakesOverDuringASleepLeavesTheProgramAwake) {
    const BusPeer::Target bus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
    const std::string name = FakeLogind::name;
    constexpr std::uint32_t allowReplacement = 1;
    constexpr std::uint32_t replaceExisting = 2;
    BusPeer& first = addPeer();
    BusPeer& second = addPeer();
    ASSERT_TRUE(runUntilAnswered(first.call(bus, "RequestName", name, allowReplacement)));
    start();
    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilHeardBy(first));
    ASSERT_TRUE(runUntilHeardBy(first));
    first.emit({FakeLogind::path, FakeLogind::interface}, "PrepareForSleep", true);
    ASSERT_TRUE(runUntilTold({"sleep"}));

    ASSERT_TRUE(runUntilAnswered(second.call(bus, "RequestName", name, replaceExisting)));

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, ABusThatEndsDuringASleepLeavesTheProgramAwake) {
    ASSERT_TRUE(startWithLogind());
    logind_->announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));
    logind_.reset();

    stopBus();

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, ARestartedBusIsUsedAgain) {
    ASSERT_TRUE(startWithLogind());
    logind_.reset();
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    ASSERT_TRUE(daemon_.start());
    addLogind();

    ASSERT_TRUE(runUntilInhibited());
    logind_->announce(true);
    EXPECT_TRUE(runUntilTold({"sleep"}));
}

TEST_P(UnhelpfulLogindTest, IsHeardAllTheSame) {
    startInVain(GetParam());

    logind_->announce(true);
    logind_->announce(false);

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_P(UnhelpfulLogindTest, IsAskedAgain) {
    startInVain(GetParam());

    *logind_.*GetParam() = false;

    EXPECT_TRUE(runUntilInhibited());
}

INSTANTIATE_TEST_SUITE_P(
    LogindSleepMonitorTest, UnhelpfulLogindTest, testing::Values(&FakeLogind::refuses, &FakeLogind::hangs),
    [](const auto& test) { return test.param == &FakeLogind::refuses ? "ThatRefuses" : "ThatHangs"; });

TEST_F(ImpatientSleepMonitorTest, DuringASleepLogindIsNotAskedAgain) {
    startInVain(&FakeLogind::refuses);
    logind_->announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));
    ASSERT_TRUE(runUntilAllHeard());
    const std::size_t requests = logind_->requests().size();
    const int clockReadings = clockReadings_;

    ASSERT_TRUE(runUntil([&] { return clockReadings_ == clockReadings + 2; }));

    ASSERT_TRUE(runUntilAllHeard());
    EXPECT_EQ(logind_->requests().size(), requests);
}

TEST_F(LogindSleepMonitorTest, StartedDuringASleepItAsksAgainAtTheEnd) {
    addLogind();
    logind_->refuses = true;
    start();
    ASSERT_TRUE(runUntil([this] { return logind_->requests().size() == 1; }));
    logind_->refuses = false;

    logind_->announce(false);

    EXPECT_TRUE(runUntilInhibited());
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(LogindSleepMonitorTest, APermissionThatComesDuringTheSleepDoesNotHoldItUp) {
    addLogind();
    ASSERT_TRUE(runUntilConnected());
    // The first answer comes after our question for logind, the second after the bus has answered that.
    ASSERT_TRUE(runUntilAllHeard());
    ASSERT_TRUE(runUntilAllHeard());
    start();

    // Sent before the answer to the request, which waits at the bus by now.
    logind_->announce(true);

    ASSERT_TRUE(runUntilTold({"sleep"}));
    ASSERT_TRUE(runUntil([this] { return !logind_->requests().empty(); }));
    ASSERT_TRUE(runUntilAllHeard());
    EXPECT_EQ(logind_->inhibitors(), 0);
}

TEST_F(LogindSleepMonitorTest, AnnouncementsOfOtherProgramsDoNotCount) {
    ASSERT_TRUE(startWithLogind());
    BusPeer& other = addPeer();

    other.emitTo(bus_.uniqueName(), {FakeLogind::path, FakeLogind::interface}, "PrepareForSleep", true);

    ASSERT_TRUE(runUntilHeardBy(other));
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_EQ(logind_->inhibitors(), 1);
}

TEST_F(LogindSleepMonitorTest, ProgramsThatAreStartedFromHereDoNotHoldUpTheSleep) {
    addLogind();
    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilAllHeard());
    const PipeEnds before = openPipeEnds();
    start();

    ASSERT_TRUE(runUntilInhibited());

    const PipeEnds after = openPipeEnds();
    EXPECT_EQ(after.ours, before.ours + 1);
    EXPECT_EQ(after.inherited, before.inherited);
}

TEST_F(LogindSleepMonitorTest, BeforeTheStartNoSleepIsToldOrDelayed) {
    addLogind();
    ASSERT_TRUE(runUntilConnected());

    logind_->announce(true);
    logind_->announce(false);

    ASSERT_TRUE(runUntilAllHeard());
    EXPECT_THAT(told_, IsEmpty());
    EXPECT_THAT(logind_->requests(), IsEmpty());
}

TEST_F(LogindSleepMonitorTest, ItsEndLetsTheSleepGo) {
    addLogind();
    std::optional<LogindSleepMonitor> monitor(std::in_place, loop_, bus_, [] { return 0.0; });
    monitor->start({});
    ASSERT_TRUE(runUntilInhibited());

    monitor.reset();

    EXPECT_EQ(logind_->inhibitors(), 0);
}

TEST_F(LogindSleepMonitorTest, WithoutLogindTheClocksTellOfASleep) {
    start();
    ASSERT_TRUE(runUntilConnected());

    suspended_ += 3600;

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, WithoutABusTheClocksTellOfASleep) {
    stopBus();
    start();
    ASSERT_TRUE(runUntilUnavailable());

    suspended_ += 3600;

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, ASleepThatLogindDidNotAnnounceIsToldByTheClocks) {
    ASSERT_TRUE(startWithLogind());

    suspended_ += 3600;

    EXPECT_TRUE(runUntilTold({"sleep", "wake"}));
}

TEST_F(LogindSleepMonitorTest, ASleepThatLogindAndTheClocksTellIsToldOnce) {
    ASSERT_TRUE(startWithLogind());
    logind_->announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));

    suspended_ += 3600;
    logind_->announce(false);

    ASSERT_TRUE(runUntilTold({"sleep", "wake"}));
    runFor(2 * LogindSleepMonitor::checkInterval);
    EXPECT_THAT(told_, ElementsAre("sleep", "wake"));
}

} // namespace tarnwick
