// The process that does an update's work, played by a script.
#include "app/App/UpdateProcess.h"

#include "tests/platform/bundle/MadeBundle.h"

#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class UpdateProcessTest : public testing::Test {
protected:
    /// What the process does. It knows the test's folder as $folder.
    void play(const std::string& script) const {
        const fs::path program = bundle / "bin" / "tarnwick-update";
        writeFile(program, "#!/bin/sh\nfolder='" + folder.path().string() + "'\n" + script);
        fs::permissions(program, fs::perms::owner_all);
    }

    /// What the process leaves.
    void makeReady(UpdateRecord::Phase phase = UpdateRecord::Phase::prepared) const {
        makeBundle(bundle, "1.0");
        makeBundle(beside.other(), "1.1");
        ASSERT_TRUE(beside.write(
            {.phase = phase,
             .from = ReleaseVersion::parse("1.0").value(),
             .to = ReleaseVersion::parse("1.1").value()}));
    }

    void check() {
        handle = work.check([this](const UpdateWork::CheckResult& result) {
            results.push_back(result);
            handle.reset();
        });
    }

    void download() {
        FoundUpdate update;
        update.release.version = ReleaseVersion::parse("1.1").value();
        handle = work.download(update, [this](const UpdateWork::News& each) {
            news.push_back(each);
            if (std::holds_alternative<UpdateWork::Ended>(each)) {
                handle.reset();
            }
        });
    }

    template<class Condition>
    static void waitUntil(Condition condition) {
        ASSERT_TRUE(QTest::qWaitFor(condition, 30'000));
    }

    [[nodiscard]] std::string failure() const {
        const auto* const failed = std::get_if<UpdateWork::CheckFailure>(&results.at(0));
        return failed != nullptr ? failed->text : "";
    }

    [[nodiscard]] UpdateWork::Problem problem() const {
        return std::get<UpdateWork::Ended>(news.back()).problem;
    }

    TemporaryFolder folder;
    fs::path bundle = folder.path() / "Tarnwick é.app";
    UpdateFolder beside{bundle};
    PreparedUpdate prepared{beside};
    UpdateProcess work{prepared};
    RunLoop::Handle handle;
    std::vector<UpdateWork::CheckResult> results;
    std::vector<UpdateWork::News> news;
};

TEST_F(UpdateProcessTest, ACheckGivesTheFeedThatTheProcessHasVerified) {
    play("[ \"$1\" = check ] && echo '{\"feed\":\"the feed\"}'\nexec sleep 60\n");
    check();

    waitUntil([this] { return !results.empty(); });

    EXPECT_EQ(std::get<UpdateWork::VerifiedFeed>(results.at(0)).text, "the feed");
}

TEST_F(UpdateProcessTest, ADownloadIsToldTheFeedOfTheCheckAndTheVersion) {
    makeReady();
    play("if [ \"$1\" = check ]; then echo '{\"feed\":\"the feed\"}'; exit; fi\n"
         "read -r order; echo \"$order\" > \"$folder/order\"; echo '{\"ended\":null}'\n");
    check();
    waitUntil([this] { return !results.empty(); });
    download();

    waitUntil([this] { return !news.empty(); });

    EXPECT_EQ(problem(), std::nullopt);
    EXPECT_THAT(contentOf(folder.path() / "order"), HasSubstr("\"feed\":\"the feed\""));
    EXPECT_THAT(contentOf(folder.path() / "order"), HasSubstr("\"version\":\"1.1\""));
}

TEST_F(UpdateProcessTest, WhatIsReadyIsHeldOnceTheProcessHasGone) {
    makeReady();
    // It has the lock until then.
    play(
        "exec 9> '" + (beside.path() / "update.lock").string()
        + "'\nflock 9\necho '{\"complete\":true}'\necho '{\"ended\":null}'\nsleep 0.2\n");
    download();

    waitUntil([this] { return news.size() == 2; });

    EXPECT_EQ(problem(), std::nullopt);
    EXPECT_TRUE(prepared.isHeld());
    EXPECT_FALSE(beside.lock()) << "by the program itself";
}

TEST_F(UpdateProcessTest, WhatIsNotThereIsNotReadyWhateverTheProcessSays) {
    play("echo '{\"complete\":true}'\necho '{\"ended\":null}'\n");
    download();

    waitUntil([this] { return news.size() == 2; });

    EXPECT_EQ(problem(), "The update is no longer there.");
    EXPECT_FALSE(prepared.isHeld());
}

TEST_F(UpdateProcessTest, ADownloadTellsItsNewsInOrder) {
    play("echo '{\"received\":5}'\necho '{\"received\":9}'\necho 'no message'\necho '{\"complete\":true}'\n"
         "echo '{\"ended\":\"The disk is full.\"}'\n");
    download();

    waitUntil([this] { return news.size() == 4; });

    EXPECT_EQ(std::get<UpdateWork::Received>(news.at(1)).bytes, 9U);
    EXPECT_TRUE(std::holds_alternative<UpdateWork::Complete>(news.at(2)));
    EXPECT_EQ(problem(), "The disk is full.");
}

TEST_F(UpdateProcessTest, AProcessThatIsKilledIsToldOf) {
    play("kill -KILL $$\n");
    check();
    waitUntil([this] { return !results.empty(); });
    EXPECT_EQ(failure(), "The updater has ended unexpectedly.");

    download();
    waitUntil([this] { return !news.empty(); });
    EXPECT_EQ(problem(), "The updater has ended unexpectedly.");
}

TEST_F(UpdateProcessTest, AProcessThatCanNotBeStartedIsToldOfLater) {
    check();
    EXPECT_THAT(results, IsEmpty()) << "not inside the call";

    waitUntil([this] { return !results.empty(); });

    EXPECT_EQ(failure(), "Tarnwick can't be replaced where it is: its folder was moved or removed.");
    QCoreApplication::sendPostedEvents(); // what else is in the queue
    QCoreApplication::processEvents();
    EXPECT_EQ(results.size(), 1U);
}

TEST_F(UpdateProcessTest, ABundleThatWasMovedAwayIsToldOfAtADownloadToo) {
    download();

    waitUntil([this] { return !news.empty(); });

    EXPECT_EQ(problem(), "Tarnwick can't be replaced where it is: its folder was moved or removed.");
}

TEST_F(UpdateProcessTest, AProgramThatMayNotBeStartedIsToldOfWithTheReason) {
    play("exit 0\n");
    fs::permissions(bundle / "bin/tarnwick-update", fs::perms::owner_read);
    check();

    waitUntil([this] { return !results.empty(); });

    EXPECT_THAT(failure(), MatchesRegex("The updater can't be started \\(.*ermission denied\\)\\."));
}

TEST_F(UpdateProcessTest, TheHandleEndsTheProcess) {
    play("echo $$ > \"$folder/new\"; mv \"$folder/new\" \"$folder/process\"; exec sleep 60\n");
    download();
    waitUntil([this] { return fs::exists(folder.path() / "process"); });
    const fs::path process = "/proc/" + std::to_string(std::stoi(contentOf(folder.path() / "process")));
    EXPECT_TRUE(fs::exists(process));

    handle.reset();

    EXPECT_FALSE(fs::exists(process));
    EXPECT_THAT(news, IsEmpty());
}

TEST_F(UpdateProcessTest, ItTellsWhatIsInTheWayAndRemovesWhatThereIs) {
    EXPECT_NE(work.obstacle(), std::nullopt) << "there is no bundle";
    writeFile(beside.archive(), "x");

    work.discard();

    EXPECT_FALSE(fs::exists(beside.path()));
}

TEST_F(UpdateProcessTest, AVersionOnTrialIsNotReplaced) {
    makeReady(UpdateRecord::Phase::fresh);
    EXPECT_EQ(work.obstacle(), std::nullopt) << "another one may be started later";

    makeReady(UpdateRecord::Phase::begun);
    EXPECT_EQ(work.obstacle(), "Version 1.1 has been installed only just now. Please try again in a minute.");

    beside.remove();
    EXPECT_EQ(work.obstacle(), std::nullopt);
}

TEST_F(UpdateProcessTest, ItRemovesNothingOfAnotherInstance) {
    writeFile(beside.archive(), "half of the other's");
    const auto ofAnother = beside.lock();
    ASSERT_TRUE(ofAnother);

    work.discard();

    EXPECT_EQ(contentOf(beside.archive()), "half of the other's");
}

} // namespace
} // namespace tarnwick::test
