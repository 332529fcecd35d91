// What stands in the place of a file or of its draft and is no file of this program.
#include "core/FileDescriptor.h"
#include "core/Storage/FileStore.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

class FileStoreObstacles : public testing::Test {
protected:
    [[nodiscard]] std::error_code replace(std::string_view text) const {
        return FileStore::replace(file, text);
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "figures.json";
};

TEST_F(FileStoreObstacles, UsesUpTheDraftOfAProgramThatWasKilled) {
    writeFile(file, "old");
    fs::path draft = file;
    draft += ".new";
    writeFile(draft, "half of something that was much longer");

    EXPECT_FALSE(replace(""));
    EXPECT_EQ(contentOf(file), "");
    EXPECT_EQ(fileCount(folder.path()), 1);
}

/// Something else has the draft's name.
class ForeignDraft : public FileStoreObstacles {
protected:
    ForeignDraft() { writeFile(foreign, "foreign"); }

    void expectToBeOutOfTheWay() const {
        EXPECT_FALSE(replace("new"));
        EXPECT_EQ(contentOf(file), "new");
        EXPECT_EQ(contentOf(foreign), "foreign");
        EXPECT_FALSE(fs::exists(fs::symlink_status(draft)));
    }

    fs::path foreign = folder.path() / "foreign";
    fs::path draft = folder.path() / "figures.json.new";
};

TEST_F(ForeignDraft, IsNotWrittenToThroughALink) {
    fs::create_symlink(foreign, draft);
    expectToBeOutOfTheWay();
}

TEST_F(ForeignDraft, MakesNoFileAsALinkThatLeadsNowhere) {
    fs::create_symlink(folder.path() / "nowhere", draft);
    expectToBeOutOfTheWay();
    EXPECT_FALSE(fs::exists(folder.path() / "nowhere"));
}

TEST_F(ForeignDraft, IsNotWrittenToAsTheSecondNameOfAFile) {
    fs::create_hard_link(foreign, draft);
    expectToBeOutOfTheWay();
}

TEST_F(ForeignDraft, IsNotWaitedForWhenItIsAPipe) {
    ASSERT_EQ(::mkfifo(draft.c_str(), 0600), 0);
    expectToBeOutOfTheWay();
}

TEST_F(ForeignDraft, IsNotWrittenToWhenItIsAPipeWithAReader) {
    ASSERT_EQ(::mkfifo(draft.c_str(), 0600), 0);
    const FileDescriptor reader(::open(draft.c_str(), O_RDONLY | O_NONBLOCK));
    expectToBeOutOfTheWay();
}

/// What the file's name leads to is no file.
class NoFileInItsPlace : public FileStoreObstacles {
protected:
    NoFileInItsPlace() {
        fs::create_symlink("target", file);
        EXPECT_EQ(::mkfifo(target.c_str(), 0600), 0);
    }

    fs::path target = folder.path() / "target";
};

TEST_F(NoFileInItsPlace, IsNotReplaced) {
    EXPECT_EQ(replace("new"), std::errc::operation_not_supported);
    EXPECT_TRUE(fs::is_fifo(target));
    EXPECT_EQ(fileCount(folder.path()), 2);
}

TEST_F(NoFileInItsPlace, IsNotWaitedForByAFlush) {
    FileStore::flush(file);
    EXPECT_TRUE(fs::is_fifo(target));
}

TEST_F(NoFileInItsPlace, IsNotKeptAsideEither) {
    EXPECT_EQ(FileStore::keepAside(file), std::errc::operation_not_supported);
    EXPECT_TRUE(fs::is_fifo(target));
    EXPECT_EQ(fileCount(folder.path()), 2);
}

} // namespace
} // namespace tarnwick
