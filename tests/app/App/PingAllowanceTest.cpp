// What an administrator is asked to run, so that this user may ping. The program that asks is a stand-in.
#include "app/App/PingAllowance.h"

#include "tests/platform/qt/StartedBeside.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tarnwick {

namespace {

class PingAllowanceTest : public testing::Test {
protected:
    PingAllowanceTest() { qputenv("PATH", QByteArray::fromStdString(folder_.path().string())); }

    ~PingAllowanceTest() override { qputenv("PATH", path_); }

    /// Writes down its arguments, one a line, and ends with this status.
    void installAsker(int status) {
        const std::filesystem::path program = folder_.path() / "pkexec";
        test::writeFile(
            program, "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + record_.string() + "'\nexit "
                         + std::to_string(status) + "\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }

    [[nodiscard]] static std::optional<bool> ask() {
        return test::answerOf([](DesktopOpened ended) {
            PingAllowance::ask({.lowest = 1000, .highest = 1001}, std::move(ended));
        });
    }

    test::TemporaryFolder folder_;
    std::filesystem::path record_ = folder_.path() / "record";
    QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(PingAllowanceTest, CanOnlyBeAskedForWhereThereIsAProgramThatAsks) {
    EXPECT_FALSE(PingAllowance::canAsk());

    installAsker(0);

    EXPECT_TRUE(PingAllowance::canAsk());
}

TEST_F(PingAllowanceTest, RunsAFixedScriptWithTheRangeAndTheFiles) {
    installAsker(0);

    EXPECT_EQ(ask(), true);

    const std::string words = test::contentOf(record_);
    EXPECT_THAT(words, testing::StartsWith("/bin/sh\n-c\numask 022 && printf '%s' \"$1\" >\"$2\" && "));
    EXPECT_THAT(
        words, testing::EndsWith("\nsh\n1000 1001\n/proc/sys/net/ipv4/ping_group_range\n"
                                 "/etc/sysctl.d/60-tarnwick-ping.conf\n"));
}

TEST_F(PingAllowanceTest, ARefusalIsNoPermission) {
    installAsker(126);

    EXPECT_EQ(ask(), false);
}

} // namespace tarnwick
