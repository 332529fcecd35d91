// Changes of a file in the ways that programs change one, with the real system and a real loop.
#include "platform/linux/FileWatch.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/core/ChildProcess.h"
#include "tests/support/Files.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

class FileWatchTest : public testing::Test {
protected:
    FileWatchTest() { test::writeFile(file_, "first"); }

    void watch() {
        watch_ = std::make_unique<FileWatch>(loop_, file_, [this] { ++told_; });
    }

    /// Whether another change is told.
    [[nodiscard]] bool isTold() {
        const int before = told_;
        const double patience = loop_.now() + 20;
        while (told_ == before && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return told_ > before;
    }

    /// Whether no change is told. The system reports changes in order: once a second file's change is told,
    /// all earlier ones were.
    [[nodiscard]] bool isQuiet() {
        const int before = told_;
        const fs::path witness = file_.parent_path() / "witness";
        bool isSeen = false;
        const FileWatch other(loop_, witness, [&] { isSeen = true; });
        test::writeFile(witness, "here");
        const double patience = loop_.now() + 20;
        while (!isSeen && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return isSeen && told_ == before;
    }

    void expectThatAChangeCanBeForgotten() {
        test::writeFile(file_, "second");
        watch_->forgetChanges();
        EXPECT_TRUE(isQuiet());
        test::writeFile(file_, "third");
        EXPECT_TRUE(isTold());
    }

    void runFor(double seconds) {
        const double end = loop_.now() + seconds;
        while (loop_.now() < end) {
            test::runOneTurn(loop_, end - loop_.now());
        }
    }

    test::TemporaryFolder folder_;
    fs::path home_ = folder_.path() / "home";
    fs::path file_ = home_ / "config" / "Product" / "settings.json";
    EpollRunLoop loop_;
    std::unique_ptr<FileWatch> watch_;
    int told_ = 0;
};

} // namespace

TEST_F(FileWatchTest, NothingIsToldWhileNothingChanges) {
    watch();
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, WritingInPlaceIsTold) {
    watch();
    std::ofstream(file_, std::ios::app) << "more";
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, WritingWithoutClosingIsTold) {
    watch();
    std::ofstream stream(file_);
    stream << "second" << std::flush;
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, ReplacingByARenameIsToldEachTime) {
    watch();
    for (const std::string text : {"second", "third"}) {
        test::writeFile(file_.parent_path() / "draft", text);
        fs::rename(file_.parent_path() / "draft", file_);
        EXPECT_TRUE(isTold()) << text;
    }
}

TEST_F(FileWatchTest, MovingItAsideAndWritingAnewIsTold) {
    watch();
    fs::rename(file_, file_.parent_path() / "settings.json~");
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, RemovingAndMakingAgainIsTold) {
    watch();
    fs::remove(file_);
    EXPECT_TRUE(isTold());
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, BecomingReadableIsTold) {
    fs::permissions(file_, fs::perms::none);
    watch();
    fs::permissions(file_, fs::perms::owner_read);
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, FilesBesideItDoNotCount) {
    watch();
    test::writeFile(file_.parent_path() / "settings.json.new", "draft");
    test::writeFile(file_.parent_path() / "settings", "other");
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, ReadingItIsNoChange) {
    watch();
    EXPECT_EQ(test::contentOf(file_), "first");
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, ABurstIsToldOnceAndAMomentAfterItsFirst) {
    watch();
    const double start = loop_.now();
    for (int write = 0; write < 50; ++write) {
        test::writeFile(file_, std::to_string(write));
    }
    ASSERT_TRUE(isTold());
    EXPECT_GE(loop_.now() - start, FileWatch::settlingTime);
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, WritingWithoutEndIsTold) {
    watch();
    const RunLoop::Handle writer =
        loop_.every(loop_.now(), FileWatch::settlingTime / 5, [this] { test::writeFile(file_, "again"); });
    EXPECT_TRUE(isTold());
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, ForgottenChangesAreNotTold) {
    watch();
    expectThatAChangeCanBeForgotten();
}

TEST_F(FileWatchTest, AChangeThatWaitsForItsReportIsForgottenToo) {
    watch();
    test::writeFile(file_, "second");
    test::runOneTurn(loop_, 20);
    watch_->forgetChanges();
    EXPECT_TRUE(isQuiet());
}

TEST_F(FileWatchTest, FoldersMadeWithTheForgottenChangeAreWatched) {
    fs::remove_all(home_);
    watch();
    expectThatAChangeCanBeForgotten();
}

// Folders.

TEST_F(FileWatchTest, AFileThatIsMadeLaterIsToldTogetherWithItsFolders) {
    fs::remove_all(home_);
    watch();
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
    test::writeFile(file_, "third");
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, FoldersThatComeOneByOneAreFollowed) {
    fs::remove_all(home_);
    watch();
    for (const fs::path& folder : {home_, home_ / "config", file_.parent_path()}) {
        fs::create_directory(folder);
        ASSERT_TRUE(isTold()) << folder;
    }
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, ItIsWatchedAgainAfterItsFolderWasRemoved) {
    watch();
    for (const fs::path& folder : {file_.parent_path(), home_}) {
        fs::remove_all(folder);
        ASSERT_TRUE(isTold()) << folder;
        test::writeFile(file_, "second");
        ASSERT_TRUE(isTold()) << folder;
        runFor(2 * FileWatch::settlingTime);
        test::writeFile(file_, "third");
        EXPECT_TRUE(isTold()) << folder;
    }
}

TEST_F(FileWatchTest, AFolderThatIsMovedAwayIsNoLongerItsFolder) {
    watch();
    const fs::path elsewhere = home_ / "elsewhere";
    fs::rename(file_.parent_path(), elsewhere);
    ASSERT_TRUE(isTold());
    runFor(2 * FileWatch::settlingTime);
    const int before = told_;
    test::writeFile(elsewhere / file_.filename(), "not it");
    runFor(2 * FileWatch::settlingTime);
    EXPECT_EQ(told_, before);
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, OtherFilesInTheFoldersAboveDoNotCount) {
    watch();
    test::writeFile(home_ / "other", "text");
    test::writeFile(home_ / "config" / "other" / "settings.json", "text");
    EXPECT_TRUE(isQuiet());
}

// Links.

TEST_F(FileWatchTest, WhereTheFileIsALinkWhatItNamesIsWatched) {
    const fs::path target = home_ / "dotfiles" / "settings";
    test::writeFile(target, "first");
    fs::remove(file_);
    fs::create_symlink("../../dotfiles/settings", file_);
    watch();
    test::writeFile(target, "second");
    EXPECT_TRUE(isTold());
    test::writeFile(target.parent_path() / "draft", "third");
    fs::rename(target.parent_path() / "draft", target);
    EXPECT_TRUE(isTold());
}

TEST_F(FileWatchTest, ALinkThatIsTurnedElsewhereIsFollowed) {
    const fs::path target = home_ / "dotfiles" / "settings";
    test::writeFile(target, "first");
    watch();
    fs::remove(file_);
    fs::create_symlink(target, file_);
    ASSERT_TRUE(isTold());
    runFor(2 * FileWatch::settlingTime);
    test::writeFile(target, "second");
    EXPECT_TRUE(isTold());
}

// Beginning and end.

TEST_F(FileWatchTest, NothingIsToldAfterItsEnd) {
    watch();
    test::writeFile(file_, "second");
    watch_.reset();
    runFor(2 * FileWatch::settlingTime);
    EXPECT_EQ(told_, 0);
}

TEST_F(FileWatchTest, ItMayBeEndedByWhatItTells) {
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> observed = captured;
    bool outlivesTheWatch = false;
    watch_ = std::make_unique<FileWatch>(loop_, file_, [&, captured = std::move(captured)] {
        ++told_;
        // Not through the function itself: it would be gone if the watch destroyed it.
        const std::weak_ptr<int>& seen = observed;
        bool& result = outlivesTheWatch;
        watch_.reset();
        result = !seen.expired();
    });
    test::writeFile(file_, "second");
    EXPECT_TRUE(isTold());
    EXPECT_EQ(watch_, nullptr);
    EXPECT_TRUE(outlivesTheWatch);
}

TEST_F(FileWatchTest, WhereTheSystemCannotWatchNothingIsTold) {
    EXPECT_EQ(
        test::exitStatusOf([this] {
            rlimit usual{};
            ::getrlimit(RLIMIT_NOFILE, &usual);
            const rlimit none{.rlim_cur = 0, .rlim_max = usual.rlim_max};
            if (::setrlimit(RLIMIT_NOFILE, &none) != 0) {
                return 2;
            }
            bool isTold = false;
            const FileWatch unable(loop_, file_, [&isTold] { isTold = true; });
            ::setrlimit(RLIMIT_NOFILE, &usual);
            test::writeFile(file_, "changed");
            while (test::runOneTurn(loop_, 0.3)) {
            }
            return isTold ? 1 : 0;
        }),
        0);
}

} // namespace tarnwick
