// Small files that are read whole or not at all.
#include "core/Storage/FileStore.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

class FileStoreReadTest : public testing::Test {
protected:
    [[nodiscard]] std::optional<std::string> read() { return FileStore::read(file, error); }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "figures.json";
    std::error_code error;
};

TEST_F(FileStoreReadTest, ReadsAFileAsAWhole) {
    const std::string text = std::string(10'000, 'a') + '\0' + "end\n";
    writeFile(file, text);
    EXPECT_EQ(read(), text);
    EXPECT_FALSE(error);
}

TEST_F(FileStoreReadTest, ReadsAnEmptyFileAsAnEmptyText) {
    writeFile(file, "");
    EXPECT_EQ(read(), "");
}

TEST_F(FileStoreReadTest, ClearsAnOldErrorWhenItHasReadAFile) {
    writeFile(file, "text");
    error = std::make_error_code(std::errc::io_error);
    EXPECT_EQ(read(), "text");
    EXPECT_FALSE(error);
}

TEST_F(FileStoreReadTest, TellsAMissingFileFromOthers) {
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
}

TEST_F(FileStoreReadTest, DoesNotReadAFolder) {
    fs::create_directory(file);
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_TRUE(error);
}

TEST_F(FileStoreReadTest, DoesNotWaitForTheOtherEndOfAPipe) {
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_TRUE(error);
}

TEST_F(FileStoreReadTest, DoesNotReadAFileOfMoreThanSixteenMegabytes) {
    writeFile(file, "");
    fs::resize_file(file, (std::uintmax_t{16} << 20) + 1);
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_EQ(error, std::errc::file_too_large);
}

TEST_F(FileStoreReadTest, DoesNotReadADeviceThatNeverEnds) {
    file = "/dev/zero";
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_TRUE(error);
}

TEST_F(FileStoreReadTest, ReportsAFileThatCanBeOpenedButNotRead) {
    file = "/proc/self/mem"; // nothing is mapped at its beginning
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_EQ(error, std::errc::io_error);
}

} // namespace
} // namespace tarnwick
