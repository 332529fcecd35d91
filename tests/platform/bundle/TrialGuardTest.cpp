// A new version as a process of its own, and the one that watches over it.
#include "platform/bundle/TrialGuard.h"

#include "platform/bundle/PreparedUpdate.h"
#include "tests/platform/bundle/MadeBundle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

class TrialGuardTest : public testing::Test {
protected:
    /// Starts 1.1, which is this script; the exit status of its process. The version that was brought back
    /// from is what `verdict` gives later.
    int start(const std::string& script) {
        makeBundle(update.other(), "1.1", script);
        return startPrepared();
    }

    int startPrepared(bool anotherStarts = false) {
        makeBundle(bundle, "1.0");
        EXPECT_TRUE(update.write(
            {.phase = Phase::prepared,
             .from = ReleaseVersion::parse("1.0").value(),
             .to = ReleaseVersion::parse("1.1").value()}));
        EXPECT_EQ(PreparedUpdate(update).exchange(), std::nullopt);
        const auto ofAnother = anotherStarts ? update.lock() : std::nullopt;
        const pid_t process = ::fork();
        if (process == 0) {
            const auto version = startOnTrial(update, {"--from-session", folder.path() / "written"});
            writeFile(folder.path() / "verdict.new", version ? version->text() : "none");
            fs::rename(folder.path() / "verdict.new", folder.path() / "verdict");
            ::_exit(EXIT_SUCCESS);
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    [[nodiscard]] std::string verdict() const {
        constexpr std::chrono::milliseconds pause(5);
        for (int attempt = 0; attempt < 4000 && !fs::exists(folder.path() / "verdict"); ++attempt) {
            std::this_thread::sleep_for(pause);
        }
        return contentOf(folder.path() / "verdict");
    }

    TemporaryFolder folder;
    fs::path bundle = folder.path() / "Tarnwick.app";
    UpdateFolder update{bundle};
};

TEST_F(TrialGuardTest, StartsTheNewVersionInTheSameProcessWithItsArguments) {
    EXPECT_EQ(start("echo \"$1\" > \"$2\"\nrm -r '" + update.path().string() + "'\nexit 7\n"), 7);

    EXPECT_EQ(contentOf(folder.path() / "written"), "--from-session\n");
    EXPECT_EQ(verdict(), "none") << "it has removed the record, as one that has passed";
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.1"));
}

TEST_F(TrialGuardTest, BringsTheOldVersionBackWhenTheNewOneCrashesAtOnce) {
    EXPECT_EQ(start("kill -SEGV $$\n"), -1);

    EXPECT_EQ(verdict(), "1.1");
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.0"));
    EXPECT_FALSE(fs::exists(update.path()));
}

TEST_F(TrialGuardTest, BringsTheOldVersionBackWhenTheNewOneEndsWithoutAWord) {
    EXPECT_EQ(start("exit 0\n"), 0);

    EXPECT_EQ(verdict(), "1.1");
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.0"));
}

TEST_F(TrialGuardTest, BringsTheOldVersionBackWhenTheNewOneCanNotBeStarted) {
    makeBundle(update.other(), "1.1");
    fs::remove(update.other() / "bin" / "tarnwick");
    EXPECT_NE(startPrepared(), 0);

    EXPECT_EQ(verdict(), "1.1");
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.0"));
}

TEST_F(TrialGuardTest, LeavesTheWayBackToAStartInTheMeantime) {
    makeBundle(update.other(), "1.1", "kill -SEGV $$\n");

    EXPECT_EQ(startPrepared(true), -1);

    EXPECT_EQ(verdict(), "none");
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.1"));
    EXPECT_EQ(versionOf(update.other()), ReleaseVersion::parse("1.0"));
}

TEST_F(TrialGuardTest, LeavesANewVersionThatEndsWellWhereItIs) {
    const std::string record = (update.path() / "update.json").string();
    EXPECT_EQ(start("sed -i s/fresh/ended/ '" + record + "'\nexit 0\n"), 0);

    EXPECT_EQ(verdict(), "none");
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.1"));
}

} // namespace
} // namespace tarnwick::test
