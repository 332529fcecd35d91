// What a start and an end of the program in a bundle make of an update, with scripts as programs.
#include "app/App/BundleRun.h"

#include "app/App/BundleUpdates.h"
#include "tests/platform/bundle/MadeBundle.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/Variable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

constexpr int hasReturned = 42; ///< the status of a process whose run was not replaced

class BundleRunTest : public testing::Test {
protected:
    BundleRunTest() { makeBundle(bundle, "1.0"); }

    /// 1.1, which is this script.
    void makeReady(const std::string& script = "exit 0\n") const {
        makeBundle(update.other(), "1.1", script);
        record(Phase::prepared);
    }

    void record(Phase phase) const {
        ASSERT_TRUE(update.write({.phase = phase, .from = version("1.0"), .to = version("1.1")}));
    }

    /// As if 1.1 had ended in its trial without a word.
    void letItCrash() const {
        makeReady();
        ASSERT_EQ(PreparedUpdate(update).exchange(), std::nullopt);
        record(Phase::begun);
    }

    /// The exit status of a process that does this.
    static int inProcess(const std::function<void()>& act) {
        const pid_t process = ::fork();
        if (process == 0) {
            act();
            ::_exit(hasReturned);
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// That of a start with these arguments.
    [[nodiscard]] int start(const std::vector<std::string>& arguments = {}) const {
        return inProcess([&] { const BundleRun run(bundle, arguments); });
    }

    static ReleaseVersion version(const std::string& text) { return ReleaseVersion::parse(text).value(); }

    [[nodiscard]] std::string inPlace() const { return versionOf(bundle).value_or(version("0")).text(); }

    [[nodiscard]] static std::string news() { return UpdateMemory(updateMemoryFile()).takeNews(); }

    TemporaryFolder folder;
    Variable data{"XDG_DATA_HOME", folder.path().c_str()};
    fs::path bundle = folder.path() / "Tarn wick é.app";
    UpdateFolder update{bundle};
};

TEST_F(BundleRunTest, AStartWithoutAnUpdateGoesOn) {
    EXPECT_EQ(start(), hasReturned);
    EXPECT_FALSE(fs::exists(update.path()));
}

TEST_F(BundleRunTest, AStartThatFindsANewVersionReadyBecomesIt) {
    const fs::path written = folder.path() / "written";
    makeReady("echo \"$1 $2\" > \"$2\"\nrm -r '" + update.path().string() + "'\nexit 7\n");

    EXPECT_EQ(start({"--settings", written.string()}), 7);

    EXPECT_EQ(contentOf(written), "--settings " + written.string() + "\n");
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleRunTest, AStartBesideTheOneThatHasItReadyGoesOn) {
    makeReady("exit 7\n");
    PreparedUpdate ofTheOther(update);
    ASSERT_EQ(ofTheOther.hold(), std::nullopt);

    EXPECT_EQ(start(), hasReturned);

    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_TRUE(preparedIn(update));
}

TEST_F(BundleRunTest, AStartThatCanNotExchangeItGoesOnWithoutAndTellsWhy) {
    makeReady("exit 7\n");
    fs::create_directory(update.path() / "update.json.new"); // the record can't be written

    EXPECT_EQ(start(), hasReturned);

    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_EQ(news(), "The folder beside the program can't be written.");
    EXPECT_EQ(start(), hasReturned) << "it is not tried again";
    EXPECT_EQ(news(), "");
}

TEST_F(BundleRunTest, TheEndPutsWhatIsReadyInPlaceForTheNextStart) {
    BundleRun run(bundle, {});
    makeReady();
    ASSERT_EQ(run.update().hold(), std::nullopt);

    run.end();

    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_EQ(update.record().value().phase, Phase::fresh);
    EXPECT_TRUE(BundleTrial(update).isOn());
}

TEST_F(BundleRunTest, AnEndThatCanNotExchangeItTellsWhyAtTheNextStart) {
    BundleRun run(bundle, {});
    makeReady();
    ASSERT_EQ(run.update().hold(), std::nullopt);
    fs::remove_all(update.other());

    run.endForRestart({});

    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_THAT(news(), testing::HasSubstr("its folder was moved or removed"));
    EXPECT_FALSE(fs::exists(update.path()));
}

TEST_F(BundleRunTest, ARestartStartsWhatIsReady) {
    EXPECT_EQ(
        inProcess([this] {
            BundleRun run(bundle, {});
            makeReady("[ \"$1\" = --from-session ] && rm -r '" + update.path().string() + "' && exit 7\n");
            static_cast<void>(run.update().hold());
            run.endForRestart({"--from-session"});
        }),
        7);

    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleRunTest, UninstallingLeavesNothingBesideTheBundle) {
    simulation::VirtualRunLoop loop;
    {
        BundleRun run(bundle, {});
        makeReady();
        ASSERT_EQ(run.update().hold(), std::nullopt);
        run.forgetUpdates(loop);
        run.end();
        EXPECT_FALSE(fs::exists(update.path())) << "what was ready";
        EXPECT_EQ(inPlace(), "1.0");
    }
    makeReady();
    ASSERT_EQ(PreparedUpdate(update).exchange(), std::nullopt);

    BundleRun run(bundle, {});
    ASSERT_TRUE(run.trial().isOn());
    run.forgetUpdates(loop);
    run.end();

    EXPECT_FALSE(fs::exists(update.path())) << "the version before";
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleRunTest, AnEndInTheTrialKeepsTheNewVersion) {
    makeReady();
    ASSERT_EQ(PreparedUpdate(update).exchange(), std::nullopt);
    {
        BundleRun run(bundle, {});
        ASSERT_TRUE(run.trial().isOn());
        run.end();
    }

    EXPECT_EQ(start(), hasReturned);

    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleRunTest, AfterACrashInTheTrialTheOldVersionIsStarted) {
    makeBundle(bundle, "1.0", "exit 5\n");
    letItCrash();

    EXPECT_EQ(start(), 5);

    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_EQ(news(), "Tarnwick 1.1 did not run on this machine, so version 1.0 is back.");
}

TEST_F(BundleRunTest, TheVersionThatCrashedDoesNotGoOnInThePlaceOfTheOldOne) {
    fs::remove(bundle / "bin/tarnwick");
    letItCrash();

    EXPECT_EQ(start(), EXIT_FAILURE);
}

} // namespace
} // namespace tarnwick::test
