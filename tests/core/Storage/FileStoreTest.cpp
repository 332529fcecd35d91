// Small files that are replaced whole or not at all.
#include "core/Storage/FileStore.h"

#include "core/FileDescriptor.h"
#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/support/Files.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

class FileStoreTest : public testing::Test {
protected:
    [[nodiscard]] std::optional<std::string> read() const {
        std::error_code error;
        return FileStore::read(file, error);
    }

    [[nodiscard]] std::error_code replace(std::string_view text) const {
        return FileStore::replace(file, text);
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "figures.json";
};

TEST_F(FileStoreTest, ReadsOnAfterASignal) {
    writeFile(file, "whole");
    interruptedReads = 2;
    EXPECT_EQ(read(), "whole");
    EXPECT_EQ(interruptedReads, 0);
}

TEST_F(FileStoreTest, WritesOnAfterASignal) {
    interruptedWrites = 2;
    EXPECT_FALSE(replace("whole"));
    EXPECT_EQ(interruptedWrites, 0);
    EXPECT_EQ(contentOf(file), "whole");
}

TEST_F(FileStoreTest, WritesAFileThatWasNotThere) {
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_EQ(fileCount(folder.path()), 1);
}

TEST_F(FileStoreTest, ReplacesALongerTextByAShorterOne) {
    writeFile(file, "a much longer text");
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_EQ(fileCount(folder.path()), 1);
}

TEST_F(FileStoreTest, CreatesTheFoldersAboveTheFile) {
    file = folder.path() / "one" / "two" / "three" / "figures.json";
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(FileStoreTest, FoldersThatItCreatesAreTheUsersOwn) {
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::others_read);
    file = folder.path() / "one" / "two" / "figures.json";
    EXPECT_FALSE(replace("new"));

    EXPECT_EQ(fs::status(folder.path() / "one").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path() / "one" / "two").permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path()).permissions(), fs::perms::owner_all | fs::perms::others_read);
}

TEST_F(FileStoreTest, ForAPowerCutFlushesTheTextFirstAndTheFolderLast) {
    diskCalls.clear();

    EXPECT_FALSE(FileStore::replace(file, "new", FileStore::Durability::powerCut));

    EXPECT_EQ(read(), "new");
    EXPECT_THAT(
        diskCalls, testing::ElementsAre(
                       "flush figures.json.new", "rename figures.json.new",
                       "flush " + folder.path().filename().string()));
}

TEST_F(FileStoreTest, GivesAFlushedTextItsSecondNameBeforeTheFolderIsFlushed) {
    diskCalls.clear();

    EXPECT_FALSE(FileStore::replaceAndKeep(file, "new"));
    ASSERT_FALSE(FileStore::replace(file, "newer", FileStore::Durability::crash));

    EXPECT_THAT(
        diskCalls, testing::ElementsAre(
                       "flush figures.json.new", "rename figures.json.new", "rename figures.json.flushed.new",
                       "flush " + folder.path().filename().string(), "rename figures.json.new"));
    EXPECT_EQ(contentOf(FileStore::flushedName(file)), "new");
}

TEST_F(FileStoreTest, FlushesEachFolderThatItMakesAndTheOneThatHoldsThem) {
    file = folder.path() / "one" / "two" / "figures.json";
    diskCalls.clear();

    EXPECT_FALSE(FileStore::replace(file, "new", FileStore::Durability::powerCut));

    EXPECT_THAT(
        diskCalls, testing::ElementsAre(
                       "flush one", "flush " + folder.path().filename().string(), "flush figures.json.new",
                       "rename figures.json.new", "flush two"));
}

TEST_F(FileStoreTest, WaitsForTheDiskInAFlushWhenTheTextOnlyOutlivesACrash) {
    diskCalls.clear();
    EXPECT_FALSE(FileStore::replace(file, "new", FileStore::Durability::crash));
    EXPECT_THAT(diskCalls, testing::ElementsAre("rename figures.json.new"));
    diskCalls.clear();
    FileStore::flush(file);
    const std::string folderName = folder.path().filename().string();
    EXPECT_THAT(diskCalls, testing::ElementsAre("flush figures.json", "flush " + folderName));
}

TEST_F(FileStoreTest, LeavesAnOpenReaderTheOldText) {
    writeFile(file, "old");
    std::ifstream reader(file);
    ASSERT_FALSE(replace("new"));
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "old");
}

TEST_F(FileStoreTest, KeepsThePermissionsOfTheOldFile) {
    writeFile(file, "old");
    const auto wanted =
        fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_exec;
    fs::permissions(file, wanted);
    ASSERT_FALSE(replace("new"));
    EXPECT_EQ(fs::status(file).permissions(), wanted);
}

TEST_F(FileStoreTest, GivesANewFileThePermissionsThatTheUserWants) {
    const mode_t before = ::umask(0);
    EXPECT_FALSE(replace("new"));
    ::umask(before);
    EXPECT_EQ(static_cast<unsigned>(fs::status(file).permissions()), 0666U);
}

TEST_F(FileStoreTest, FollowsALinkToTheFileThatItNames) {
    const fs::path target = folder.path() / "elsewhere" / "real.json";
    fs::create_directory(target.parent_path());
    writeFile(target, "old");
    fs::create_symlink(target, file);

    ASSERT_FALSE(replace("new"));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(contentOf(target), "new");
    EXPECT_EQ(fileCount(target.parent_path()), 1);
}

TEST_F(FileStoreTest, FollowsALinkThatNamesItsTargetRelativeToItself) {
    writeFile(folder.path() / "real.json", "old");
    fs::create_symlink("real.json", file);
    ASSERT_FALSE(replace("new"));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(contentOf(folder.path() / "real.json"), "new");
}

TEST_F(FileStoreTest, ReplacesALinkThatNamesItself) {
    fs::create_symlink(file, file);
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(FileStoreTest, ReportsAFileThatStandsInThePlaceOfAFolder) {
    const fs::path obstacle = folder.path() / "obstacle";
    writeFile(obstacle, "old");
    file = obstacle / "figures.json";
    EXPECT_TRUE(replace("new"));
    EXPECT_EQ(contentOf(obstacle), "old");
}

TEST_F(FileStoreTest, ReportsAFolderThatStandsInThePlaceOfTheFile) {
    fs::create_directories(file / "inside");
    EXPECT_TRUE(replace("new"));
    EXPECT_TRUE(fs::exists(file / "inside"));
    EXPECT_EQ(fileCount(folder.path()), 1);
}

TEST_F(FileStoreTest, LeavesTheOldFileWholeWhenTheNewOneMayNotGrow) {
    writeFile(file, "old");
    const std::optional<int> status = exitStatusOf([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit fewBytes{.rlim_cur = 100, .rlim_max = 100};
        ::setrlimit(RLIMIT_FSIZE, &fewBytes);
        return replace(std::string(1000, 'n')) == std::errc::file_too_large ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentOf(file), "old");
    EXPECT_EQ(fileCount(folder.path()), 1);
}

/// Writes "old" to the only file of a small disk, lets `happen` what it tells, and looks at the file again.
class FileStoreOnASmallDisk : public FileStoreTest {
protected:
    [[nodiscard]] std::optional<int> statusAfter(const std::function<bool()>& happens) const {
        return exitStatusOf([&] {
            if (!havePrivateMounts() || !mountSmallDisk(folder.path()) || replace("old")) {
                return noMounts;
            }
            return happens() && contentOf(file) == "old" && fileCount(folder.path()) == 1 ? 0 : 1;
        });
    }
};

#define EXPECT_DONE(status)                                                                                  \
    if ((status) == noMounts) {                                                                              \
        TARNWICK_CANNOT_RUN("no file systems of its own here");                                              \
    }                                                                                                        \
    EXPECT_EQ(status, 0)

TEST_F(FileStoreOnASmallDisk, LeavesTheOldFileWholeWhenTheDiskIsFull) {
    const std::optional<int> status =
        statusAfter([this] { return replace(std::string(1 << 20, 'n')) == std::errc::no_space_on_device; });
    EXPECT_DONE(status);
}

TEST_F(FileStoreOnASmallDisk, LeavesTheOldFileWholeWhenTheDiskIsWriteProtected) {
    const std::optional<int> status = statusAfter([this] {
        return protectFromWriting(folder.path()) && replace("new") == std::errc::read_only_file_system;
    });
    EXPECT_DONE(status);
}

TEST_F(FileStoreTest, LetsASecondWriterOfTheSameMomentTryAgainLater) {
    writeFile(file, "old");
    fs::path draft = file;
    draft += ".new";
    FileDescriptor other(::open(draft.c_str(), O_WRONLY | O_CREAT, 0600));
    ASSERT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);

    EXPECT_EQ(replace("new"), std::errc::resource_unavailable_try_again);
    EXPECT_EQ(contentOf(file), "old");

    other.reset();
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(FileStoreTest, IsWrittenWhereTheFileSystemHasNoLocks) {
    lockError = ENOLCK;
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(lockError, 0);
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(FileStoreTest, LeavesAFileAloneThatAnotherWriterPutInPlaceAsItsDraft) {
    const fs::path draft = folder.path() / "figures.json.new";
    writeFile(draft, "of the other writer");
    beforeLocking = [&] { fs::rename(draft, file); };

    EXPECT_EQ(replace("own"), std::errc::resource_unavailable_try_again);

    EXPECT_EQ(read(), "of the other writer");
    EXPECT_FALSE(replace("own"));
    EXPECT_EQ(read(), "own");
}

TEST_F(FileStoreTest, LeavesANewDraftAloneThatAnotherWriterMadeInPlaceOfItsOwn) {
    const fs::path draft = folder.path() / "figures.json.new";
    beforeLocking = [&] {
        fs::rename(draft, file);
        writeFile(draft, "of the other writer");
    };

    EXPECT_EQ(replace("own"), std::errc::resource_unavailable_try_again);

    EXPECT_EQ(test::contentOf(draft), "of the other writer");
}

TEST_F(FileStoreTest, IsReadWholeWhileItIsBeingReplaced) {
    const std::string first(50'000, '1');
    const std::string second(70'000, '2');
    writeFile(file, first);
    ChildProcess writer([&](const ChildProcess::Report& report) {
        for (int number = 0; number < 10'000; ++number) {
            static_cast<void>(replace(number % 2 == 0 ? second : first));
            report();
        }
        return 0;
    });
    for (int reading = 0; reading < 200; ++reading) {
        ASSERT_TRUE(writer.hasReported());
        const std::optional<std::string> text = read();
        ASSERT_TRUE(text == first || text == second) << (text ? text->size() : 0);
    }
}

TEST_F(FileStoreTest, IsWholeWheneverItsWriterIsKilled) {
    const std::string first(50'000, '1');
    const std::string second(70'000, '2');
    writeFile(file, first);
    for (int kill = 0; kill < 30; ++kill) {
        ChildProcess writer([&](const ChildProcess::Report& report) -> int {
            for (;;) {
                report();
                static_cast<void>(replace(second));
                static_cast<void>(replace(first));
            }
        });
        for (int replaced = 0; replaced <= kill % 3; ++replaced) {
            ASSERT_TRUE(writer.hasReported());
        }
        writer.kill();
        const std::string text = contentOf(file);
        ASSERT_TRUE(text == first || text == second) << text.size();
    }
    EXPECT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_EQ(fileCount(folder.path()), 1);
}

TEST_F(FileStoreTest, KeepsAFileAsideUnderASecondName) {
    writeFile(file, "odd");
    EXPECT_FALSE(FileStore::keepAside(file));
    ASSERT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(folder.path() / "figures.json.unreadable"), "odd");
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(FileStoreTest, KeepsEveryFileThatIsPutAside) {
    for (const char* text : {"one", "two", "three"}) {
        fs::remove(file);
        writeFile(file, text);
        ASSERT_FALSE(FileStore::keepAside(file));
    }
    EXPECT_EQ(contentOf(folder.path() / "figures.json.unreadable"), "one");
    EXPECT_EQ(contentOf(folder.path() / "figures.json.unreadable-2"), "two");
    EXPECT_EQ(contentOf(folder.path() / "figures.json.unreadable-3"), "three");
}

TEST_F(FileStoreTest, KeepsAFileAsideOnceWhileItIsNotReplaced) {
    writeFile(file, "odd");

    EXPECT_FALSE(FileStore::keepAside(file));
    EXPECT_FALSE(FileStore::keepAside(file));

    EXPECT_EQ(fileCount(folder.path()), 2);
}

TEST_F(FileStoreTest, KeepsTheFileAsideThatALinkNames) {
    const fs::path target = folder.path() / "elsewhere" / "real.json";
    fs::create_directory(target.parent_path());
    writeFile(target, "odd");
    fs::create_symlink(target, file);

    EXPECT_FALSE(FileStore::keepAside(file));
    ASSERT_FALSE(replace("new"));
    EXPECT_EQ(contentOf(folder.path() / "elsewhere" / "real.json.unreadable"), "odd");
}

TEST_F(FileStoreTest, KeepsNoMoreThanNinetyNineFilesAside) {
    for (int number = 1; number <= 99; ++number) {
        writeFile(file, "odd");
        ASSERT_FALSE(FileStore::keepAside(file));
        fs::remove(file);
    }
    writeFile(file, "one too many");
    EXPECT_EQ(FileStore::keepAside(file), std::errc::file_exists);
    EXPECT_EQ(contentOf(file), "one too many");
    EXPECT_EQ(fileCount(folder.path()), 100);
}

/// On a file system without hard links.
class FileStoreWithoutLinks : public FileStoreTest {
protected:
    FileStoreWithoutLinks() { linkError = EPERM; }

    ~FileStoreWithoutLinks() override { linkError = 0; }
};

TEST_F(FileStoreWithoutLinks, KeepsAFileAsideByRenamingIt) {
    writeFile(file, "odd");
    EXPECT_FALSE(FileStore::keepAside(file));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(contentOf(folder.path() / "figures.json.unreadable"), "odd");
}

TEST_F(FileStoreWithoutLinks, ReportsAFileThatCanNotBeKeptAside) {
    writeFile(file, "odd");
    fs::create_directory(folder.path() / "figures.json.unreadable");
    EXPECT_EQ(FileStore::keepAside(file), std::errc::is_a_directory);
    EXPECT_EQ(contentOf(file), "odd");
}

TEST_F(FileStoreTest, HasNothingToPutAsideWithoutAFile) {
    EXPECT_FALSE(FileStore::keepAside(file));
    EXPECT_EQ(fileCount(folder.path()), 0);
}

} // namespace
} // namespace tarnwick
