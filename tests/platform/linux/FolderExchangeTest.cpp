// Exchanging two folders, on real file systems.
#include "platform/linux/FolderExchange.h"

#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/support/CaseName.h"
#include "tests/support/Files.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <set>
#include <sys/mount.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace tarnwick::test {

/// The error with which the next exchange is refused.
inline int exchangeError = 0;

} // namespace tarnwick::test

// In place of that of the C library.

extern "C" int renameat2(
    int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags) noexcept {
    if (!tarnwick::test::succeeds(std::exchange(tarnwick::test::exchangeError, 0))) {
        return -1;
    }
    tarnwick::test::diskCalls.push_back("exchange " + std::filesystem::path(from).filename().string());
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

using test::contentOf;
using test::writeFile;
using Outcome = std::optional<ExchangeFailure>;

Outcome obstacle(ExchangeObstacle obstacle) {
    return ExchangeFailure(obstacle);
}

class FolderExchangeTest : public testing::Test {
protected:
    FolderExchangeTest() {
        writeFile(present_ / "version", "old");
        writeFile(next_ / "version", "new");
    }

    /// Runs both in a process with mounts of its own. The test fails unless `check` returns true there, and
    /// can't run where `prepare` does not.
    void checkWithMounts(const std::function<bool()>& prepare, const std::function<bool()>& check) {
        const auto status = test::exitStatusOf([&] {
            if (!test::havePrivateMounts() || !prepare()) {
                return test::noMounts;
            }
            return check() ? 0 : 1;
        });
        if (status == test::noMounts) {
            TARNWICK_CANNOT_RUN("needs mounts of its own");
        }
        EXPECT_EQ(status, 0);
    }

    [[nodiscard]] static bool canMake(const fs::path& folder) { return ::mkdir(folder.c_str(), 0700) == 0; }

    test::TemporaryFolder folder_;
    fs::path applications_ = folder_.path() / "applications";
    fs::path present_ = applications_ / "Tarnwick.app";
    fs::path next_ = folder_.path() / "next" / "Tarnwick.app";
};

TEST_F(FolderExchangeTest, GivesEachTheOthersName) {
    EXPECT_EQ(exchangeFolders(present_, next_), Outcome());
    EXPECT_EQ(contentOf(present_ / "version"), "new");
    EXPECT_EQ(contentOf(next_ / "version"), "old");
    EXPECT_EQ(exchangeFolders(present_, next_), Outcome());
    EXPECT_EQ(contentOf(present_ / "version"), "old");
}

TEST_F(FolderExchangeTest, FlushesTheFoldersAroundThemAfterwards) {
    test::diskCalls.clear();
    EXPECT_EQ(exchangeFolders(present_, next_), Outcome());
    EXPECT_EQ(
        test::diskCalls,
        (std::vector<std::string>{"exchange Tarnwick.app", "flush applications", "flush next"}));
}

/// The other tests' folders may lie in memory.
TEST_F(FolderExchangeTest, WorksOnTheDiskToo) {
    std::string place = (fs::temp_directory_path() / "tarnwick-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(place.data()), nullptr);
    const fs::path one = fs::path(place) / "one";
    const fs::path other = fs::path(place) / "other";
    writeFile(one / "version", "old");
    writeFile(other / "version", "new");
    EXPECT_EQ(obstacleToExchange(one), Outcome());
    EXPECT_EQ(exchangeFolders(one, other), Outcome());
    EXPECT_EQ(contentOf(one / "version"), "new");
    EXPECT_EQ(test::fileCount(place), 2);
    fs::remove_all(place);
}

TEST_F(FolderExchangeTest, WhatAKilledAttemptHasLeftIsGoneAfterTheNextOne) {
    const fs::path left = applications_ / ".tarnwick-exchange-abcdef";
    fs::create_directories(left / "one");
    const fs::path notOurs = applications_ / ".tarnwick-exchange-notes";
    writeFile(notOurs / "one" / "note", "mine");

    EXPECT_EQ(obstacleToExchange(present_), Outcome());

    EXPECT_FALSE(fs::exists(left));
    EXPECT_EQ(contentOf(notOurs / "one" / "note"), "mine");
}

TEST_F(FolderExchangeTest, IsRefusedWhereOneIsMissing) {
    fs::remove_all(next_);
    EXPECT_EQ(exchangeFolders(present_, next_), obstacle(ExchangeObstacle::missing));
    EXPECT_EQ(exchangeFolders(next_, present_), obstacle(ExchangeObstacle::missing));
    EXPECT_EQ(contentOf(present_ / "version"), "old");
}

TEST_F(FolderExchangeTest, IsRefusedWhereTheUserMayNotWrite) {
    const test::Unprivileged rights;
    if (!rights.isOrdinary()) {
        TARNWICK_CANNOT_RUN("this user may write anywhere");
    }
    fs::permissions(applications_, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(exchangeFolders(present_, next_), obstacle(ExchangeObstacle::notAllowed));
    EXPECT_EQ(obstacleToExchange(present_), obstacle(ExchangeObstacle::notAllowed));
    EXPECT_EQ(contentOf(present_ / "version"), "old");
    fs::permissions(applications_, fs::perms::owner_all);

    fs::permissions(present_, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(exchangeFolders(present_, next_), obstacle(ExchangeObstacle::notAllowed));
    EXPECT_EQ(obstacleToExchange(present_), obstacle(ExchangeObstacle::notAllowed));
    fs::permissions(present_, fs::perms::owner_all);
}

TEST_F(FolderExchangeTest, IsRefusedOnAReadOnlyFileSystem) {
    const fs::path other = applications_ / "Other.app";
    checkWithMounts(
        [&] {
            return test::mountSmallDisk(applications_) && canMake(present_) && canMake(other)
                   && test::protectFromWriting(applications_);
        },
        [&] {
            return exchangeFolders(present_, other) == obstacle(ExchangeObstacle::readOnly)
                   && obstacleToExchange(present_) == obstacle(ExchangeObstacle::readOnly);
        });
}

TEST_F(FolderExchangeTest, IsRefusedBetweenFileSystems) {
    checkWithMounts(
        [this] { return test::mountSmallDisk(applications_) && canMake(present_); },
        [this] {
            return exchangeFolders(present_, next_) == obstacle(ExchangeObstacle::otherFileSystem)
                   && obstacleToExchange(present_) == Outcome();
        });
}

TEST_F(FolderExchangeTest, IsRefusedForAMountPoint) {
    // Of the same file system: no device tells.
    checkWithMounts(
        [this] { return ::mount(next_.c_str(), present_.c_str(), nullptr, MS_BIND, nullptr) == 0; },
        [this] {
            return obstacleToExchange(present_) == obstacle(ExchangeObstacle::mountPoint)
                   && exchangeFolders(present_, next_) != Outcome();
        });
}

struct SystemError {
    std::string name;
    int error;
    ExchangeFailure failure;

    friend void PrintTo(const SystemError& tested, std::ostream* out) { *out << tested.name; }
};

class RefusedExchange : public FolderExchangeTest, public testing::WithParamInterface<SystemError> {};

INSTANTIATE_TEST_SUITE_P(
    FolderExchange, RefusedExchange,
    testing::Values(
        SystemError{"Einval", EINVAL, ExchangeObstacle::unsupported},
        SystemError{"Enosys", ENOSYS, ExchangeObstacle::unsupported},
        SystemError{"Exdev", EXDEV, ExchangeObstacle::otherFileSystem},
        SystemError{"Ebusy", EBUSY, ExchangeObstacle::mountPoint},
        SystemError{"Erofs", EROFS, ExchangeObstacle::readOnly},
        SystemError{"Eacces", EACCES, ExchangeObstacle::notAllowed},
        SystemError{"Eperm", EPERM, ExchangeObstacle::notAllowed},
        SystemError{"Enospc", ENOSPC, std::make_error_code(std::errc::no_space_on_device)}),
    test::caseName);

TEST_P(RefusedExchange, TellsTheReasonAndChangesNothing) {
    test::exchangeError = GetParam().error;
    EXPECT_EQ(exchangeFolders(present_, next_), Outcome(GetParam().failure));
    EXPECT_EQ(contentOf(present_ / "version"), "old");
    EXPECT_EQ(contentOf(next_ / "version"), "new");
}

TEST_P(RefusedExchange, IsForeseenByAnAttempt) {
    test::exchangeError = GetParam().error;
    EXPECT_EQ(obstacleToExchange(present_), Outcome(GetParam().failure));
    EXPECT_EQ(test::fileCount(applications_), 1);
}

TEST_F(FolderExchangeTest, ThatIsPossibleHasNoObstacleAndLeavesNothingBehind) {
    EXPECT_EQ(obstacleToExchange(present_), Outcome());
    EXPECT_EQ(contentOf(present_ / "version"), "old");
    EXPECT_EQ(test::fileCount(applications_), 1);
    EXPECT_EQ(test::fileCount(present_), 1);
}

TEST_F(FolderExchangeTest, HasAFolderThatIsMissingAsObstacle) {
    EXPECT_EQ(obstacleToExchange(applications_ / "Other.app"), obstacle(ExchangeObstacle::missing));
    EXPECT_EQ(obstacleToExchange(present_ / "version"), obstacle(ExchangeObstacle::missing));
    EXPECT_EQ(obstacleToExchange(present_ / "version" / "x"), obstacle(ExchangeObstacle::missing));
    fs::create_symlink("Tarnwick.app", applications_ / "Link.app");
    EXPECT_EQ(obstacleToExchange(applications_ / "Link.app"), obstacle(ExchangeObstacle::missing));
}

TEST_F(FolderExchangeTest, HasAnotherOwnerAsObstacle) {
    fs::path folder = present_;
    if (::geteuid() != 0) {
        folder = "/usr/share";
    } else if (constexpr uid_t other = 1; ::chown(folder.c_str(), other, other) != 0) {
        TARNWICK_CANNOT_RUN("needs a second user");
    }
    EXPECT_EQ(obstacleToExchange(folder), obstacle(ExchangeObstacle::otherOwner));
}

TEST(ExchangeFailureText, DiffersForEachObstacle) {
    std::set<std::string> sentences;
    for (const ExchangeObstacle one :
         {ExchangeObstacle::missing, ExchangeObstacle::mountPoint, ExchangeObstacle::readOnly,
          ExchangeObstacle::otherOwner, ExchangeObstacle::notAllowed, ExchangeObstacle::otherFileSystem,
          ExchangeObstacle::unsupported}) {
        sentences.insert(sentence(one));
    }
    EXPECT_EQ(sentences.size(), 7U);
    EXPECT_EQ(
        sentence(std::make_error_code(std::errc::io_error)),
        "Tarnwick can't be replaced where it is: Input/output error.");
}

} // namespace
} // namespace tarnwick
