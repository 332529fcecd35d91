// One writer of the statistics at any time.
#include "core/Storage/WriterLock.h"

#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <optional>
#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;
using Attempt = WriterLock::Attempt;

class WriterLockTest : public testing::Test {
protected:
    test::TemporaryFolder folder;
    fs::path file = folder.path() / "Tarnwick" / "stats.json";
    fs::path lockFile = folder.path() / "Tarnwick" / "stats.json.lock";
    std::optional<WriterLock> first{file};
    WriterLock second{file};
};

TEST_F(WriterLockTest, IsHeldByTheFirstWhoAsks) {
    EXPECT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(second.acquire(), Attempt::heldByOther);
}

TEST_F(WriterLockTest, IsNotTakenByBeingMade) {
    EXPECT_EQ(second.acquire(), Attempt::taken);
}

TEST_F(WriterLockTest, StaysHeldHoweverOftenItIsAsked) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(first->acquire(), Attempt::held);
    EXPECT_EQ(first->acquire(), Attempt::held);
    EXPECT_EQ(second.acquire(), Attempt::heldByOther);
}

TEST_F(WriterLockTest, GoesToTheNextOnceItsHolderIsGone) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    ASSERT_EQ(second.acquire(), Attempt::heldByOther);
    first.reset();
    EXPECT_EQ(second.acquire(), Attempt::taken);
}

TEST_F(WriterLockTest, LeavesItsFileWhenItsHolderIsGone) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    first.reset();
    EXPECT_TRUE(fs::exists(lockFile));
}

TEST_F(WriterLockTest, GoesToTheNextOnceItsHoldersProcessIsKilled) {
    ChildProcess holder([this](const ChildProcess::Report& report) {
        if (first->acquire() == Attempt::taken) {
            report();
        }
        ::pause();
        return 0;
    });
    ASSERT_TRUE(holder.hasReported());
    ASSERT_EQ(second.acquire(), Attempt::heldByOther);

    holder.kill();
    EXPECT_EQ(second.acquire(), Attempt::taken);
}

TEST_F(WriterLockTest, IsRefusedToAnotherProcess) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(exitStatusOf([this] { return WriterLock(file).acquire() == Attempt::heldByOther ? 0 : 1; }), 0);
}

TEST_F(WriterLockTest, IsLostWhenItsFileIsDeletedAndAnotherTakesTheNewOne) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    fs::remove(lockFile);
    ASSERT_EQ(second.acquire(), Attempt::taken);
    EXPECT_EQ(first->acquire(), Attempt::heldByOther);
}

TEST_F(WriterLockTest, IsTakenAnewWhenItsFolderIsDeleted) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    fs::remove_all(lockFile.parent_path());
    EXPECT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(second.acquire(), Attempt::heldByOther);
}

TEST_F(WriterLockTest, CreatesTheFolderOfTheFile) {
    EXPECT_EQ(first->acquire(), Attempt::taken);
    EXPECT_TRUE(fs::exists(lockFile));
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(WriterLockTest, IsImpossibleWhereNoFileCanBeMade) {
    writeFile(folder.path() / "Tarnwick", "a file in the folder's place");
    EXPECT_EQ(first->acquire(), Attempt::impossible);
}

TEST_F(WriterLockTest, BecomesPossibleOnceTheObstacleIsGone) {
    writeFile(folder.path() / "Tarnwick", "a file in the folder's place");
    ASSERT_EQ(first->acquire(), Attempt::impossible);
    fs::remove(folder.path() / "Tarnwick");
    EXPECT_EQ(first->acquire(), Attempt::taken);
}

TEST_F(WriterLockTest, OfAnotherFileIsAnotherLock) {
    WriterLock other(folder.path() / "Tarnwick" / "other.json");
    EXPECT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(other.acquire(), Attempt::taken);
}

TEST_F(WriterLockTest, IsTakenOnAFileThatMayOnlyBeRead) {
    const Unprivileged user;
    ASSERT_TRUE(user.isOrdinary());
    writeFile(lockFile, "");
    fs::permissions(lockFile, fs::perms::owner_read);
    ASSERT_FALSE(std::ofstream(lockFile));

    EXPECT_EQ(first->acquire(), Attempt::taken);
    EXPECT_EQ(second.acquire(), Attempt::heldByOther);
}

TEST_F(WriterLockTest, IsNotToBeHadOnAFileThatMayNotBeRead) {
    const Unprivileged user;
    ASSERT_TRUE(user.isOrdinary());
    writeFile(lockFile, "");
    fs::permissions(lockFile, fs::perms::none);

    EXPECT_EQ(first->acquire(), Attempt::impossible);
}

TEST_F(WriterLockTest, MakesAFileWithThePermissionsThatTheUserWants) {
    const mode_t before = ::umask(0);
    EXPECT_EQ(first->acquire(), Attempt::taken);
    ::umask(before);
    EXPECT_EQ(static_cast<unsigned>(fs::status(lockFile).permissions()), 0666U);
}

/// Whether a program that is started now would get the open lock file: it would hold the lock on.
bool isPassedOn(const fs::path& file) {
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (fs::equivalent(entry.path(), file, error) && !error) {
            return (::fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC) == 0;
        }
    }
    ADD_FAILURE() << file << " is not open";
    return true;
}

TEST_F(WriterLockTest, IsNotPassedOnToProgramsThatAreStarted) {
    ASSERT_EQ(first->acquire(), Attempt::taken);
    EXPECT_FALSE(isPassedOn(lockFile));
}

TEST_F(WriterLockTest, OnAFileThatMayOnlyBeReadIsNotPassedOnEither) {
    const Unprivileged user;
    ASSERT_TRUE(user.isOrdinary());
    writeFile(lockFile, "");
    fs::permissions(lockFile, fs::perms::owner_read);

    ASSERT_EQ(first->acquire(), Attempt::taken);
    EXPECT_FALSE(isPassedOn(lockFile));
}

TEST_F(WriterLockTest, IsImpossibleOnADiskThatIsWriteProtected) {
    const std::optional<int> status = exitStatusOf([this] {
        if (!havePrivateMounts() || !mountSmallDisk(folder.path())) {
            return noMounts;
        }
        fs::create_directory(lockFile.parent_path());
        writeFile(lockFile, "");
        return protectFromWriting(folder.path()) && first->acquire() == Attempt::impossible ? 0 : 1;
    });
    if (status == noMounts) {
        TARNWICK_CANNOT_RUN("no file systems of its own here");
    }
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace tarnwick
