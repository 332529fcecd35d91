// A sleep as the real service announces it: played by python-dbusmock's template of logind.
#include "tests/core/Required.h"
#include "tests/platform/bus/LogindSleepMonitorTest.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <variant>

namespace tarnwick {

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
