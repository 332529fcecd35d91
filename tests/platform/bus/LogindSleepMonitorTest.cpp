// Sleep and wake as logind tells them: played by a peer and, for the real service's interface, by
// python-dbusmock's template of it; and as the clocks show them.
#include "platform/bus/LogindSleepMonitor.h"

#include "tests/core/Required.h"
#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeLogind.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <optional>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <variant>

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

class LogindSleepMonitorTest : public BusTest {
protected:
    explicit LogindSleepMonitorTest(double patience = LogindSleepMonitor::usualPatience)
        : monitor_(
            loop_, bus_,
            [this] {
                ++clockReadings_;
                return suspended_;
            },
            patience) {}

    void addLogind() { logind_.emplace(addPeer()); }

    /// It ends, and with it all that it knew.
    void removeLogind() {
        logind_.reset();
        peers_.clear();
    }

    void start() {
        monitor_.start({
            .willSleep =
                [this] {
                    told_.emplace_back("sleep");
                    inhibitorsWhileSaving_ = logind_ ? logind_->inhibitors() : 0;
                },
            .didWake = [this] { told_.emplace_back("wake"); },
        });
    }

    /// With logind, which sleeps would wait for.
    [[nodiscard]] bool startWithLogind() {
        addLogind();
        start();
        return runUntilInhibited();
    }

    /// And until the permission has arrived.
    [[nodiscard]] bool runUntilInhibited() {
        return runUntil([this] { return logind_->inhibitors() == 1; }) && runUntilAllHeard();
    }

    [[nodiscard]] bool runUntilTold(const std::vector<std::string>& expected) {
        return runUntil([this, &expected] { return told_ == expected; });
    }

    [[nodiscard]] bool runUntilAllHeard() { return runUntilHeardBy(logind_->peer()); }

    double suspended_ = 0;
    int clockReadings_ = 0; ///< one for each check, and for each announcement
    std::vector<std::string> told_;
    std::ptrdiff_t inhibitorsWhileSaving_ = 0;
    std::optional<FakeLogind> logind_;
    LogindSleepMonitor monitor_;
};

/// With a patience that a test can wait for.
class ImpatientSleepMonitorTest : public LogindSleepMonitorTest {
protected:
    ImpatientSleepMonitorTest() : LogindSleepMonitorTest(0.25) {}

    /// With a logind that has not let it wait.
    void startInVain(bool FakeLogind::*behavior) {
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
    ASSERT_TRUE(runUntil([this] { return bus_.state() == BusConnection::State::unavailable; }));

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

TEST_F(LogindSleepMonitorTest, AnnouncementsOfSomebodyElseDoNotCount) {
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

TEST_F(LogindSleepMonitorTest, NobodyIsToldOrHeldUpBeforeTheStart) {
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
    std::optional<LogindSleepMonitor> monitor(std::in_place, loop_, bus_);
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
    ASSERT_TRUE(runUntil([this] { return bus_.state() == BusConnection::State::unavailable; }));

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

namespace {

/// python-dbusmock in the place of systemd-logind: methods, types and signals as that service has them, in a
/// process of its own.
class MockedLogind {
public:
    explicit MockedLogind(const std::string& address) : process_(fork()) {
        if (process_ == 0) {
            setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
            execl(
                "/usr/bin/python3", "python3", "-m", "dbusmock", "--system", "--template", "logind",
                static_cast<char*>(nullptr));
            _exit(127);
        }
    }

    MockedLogind(const MockedLogind&) = delete;
    MockedLogind& operator=(const MockedLogind&) = delete;

    ~MockedLogind() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

    /// Whether this machine has it.
    [[nodiscard]] static bool isInstalled() {
        return std::system("/usr/bin/python3 -c 'import dbusmock' 2> /dev/null") == 0;
    }

private:
    pid_t process_;
};

class MockedLogindTest : public LogindSleepMonitorTest {
protected:
    using Inhibitor =
        std::tuple<std::string, std::string, std::string, std::string, std::uint32_t, std::uint32_t>;

    [[nodiscard]] std::vector<Inhibitor> inhibitors() {
        const auto answer =
            observer_->call({FakeLogind::name, FakeLogind::path, FakeLogind::interface}, "ListInhibitors");
        return runUntilAnswered(answer) && answer->error().empty() ? answer->value<std::vector<Inhibitor>>()
                                                                   : std::vector<Inhibitor>();
    }

    [[nodiscard]] bool runUntilInhibitorsAre(std::size_t count) {
        const double end = loop_.now() + 20;
        while (loop_.now() < end) {
            if (inhibitors().size() == count) {
                return true;
            }
        }
        return false;
    }

    void announce(bool isStart) {
        const std::vector<std::variant<bool>> arguments = {isStart};
        const auto answer = observer_->call(
            {FakeLogind::name, FakeLogind::path, "org.freedesktop.DBus.Mock"}, "EmitSignal",
            std::string(FakeLogind::interface), std::string("PrepareForSleep"), std::string("b"), arguments);
        ASSERT_TRUE(runUntilAnswered(answer));
        ASSERT_EQ(answer->error(), "");
    }

    BusPeer* observer_ = nullptr;
};

} // namespace

TEST_F(MockedLogindTest, AWholeSleepGoesAsWithTheRealService) {
    if (!MockedLogind::isInstalled()) {
        TARNWICK_CANNOT_RUN("python3-dbusmock is not installed");
    }
    observer_ = &addPeer();
    start();
    const MockedLogind logind(daemon_.address());
    ASSERT_TRUE(runUntilInhibitorsAre(1));
    EXPECT_EQ(std::get<0>(inhibitors().front()), "sleep");
    EXPECT_EQ(std::get<3>(inhibitors().front()), "delay");

    announce(true);
    ASSERT_TRUE(runUntilTold({"sleep"}));
    ASSERT_TRUE(runUntilInhibitorsAre(0));

    announce(false);
    ASSERT_TRUE(runUntilTold({"sleep", "wake"}));
    EXPECT_TRUE(runUntilInhibitorsAre(1));
}

} // namespace tarnwick
