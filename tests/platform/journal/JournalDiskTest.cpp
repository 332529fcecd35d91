// Disks that are full or write-protected.
#include "platform/journal/SqliteJournal.h"

#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

class JournalDisk : public testing::Test {
protected:
    /// In a child process that sees `disk` as a disk of its own; there a test ends with the number of the
    /// expectation that failed.
    void onSmallDisk(const char* size, const std::function<int()>& work) const {
        const auto status = exitStatusOf([&] {
            if (!havePrivateMounts() || !mountSmallDisk(disk, size)) {
                return noMounts;
            }
            return work();
        });
        if (status == noMounts) {
            TARNWICK_CANNOT_RUN("no mounts of its own");
        }
        EXPECT_EQ(status, 0);
    }

    TemporaryFolder folder;
    fs::path disk = folder.path();
    fs::path file = disk / "journal.sqlite";
};

/// What is left of the disk.
void fill(const fs::path& filler) {
    std::ofstream stream(filler, std::ios::binary);
    const std::string zeros(1024, '\0');
    while (stream.write(zeros.data(), static_cast<std::streamsize>(zeros.size())).flush()) {
    }
}

Journal::Batch largeBatch(int number) {
    Journal::Batch batch = batchOf(number);
    for (int gap = 0; gap < 500; ++gap) {
        batch.gaps.push_back({.span = minuteSpan(std::int64_t{1000} * number + gap, 1)});
    }
    return batch;
}

TEST_F(JournalDisk, GoesOnWhenThereIsRoomAgain) {
    onSmallDisk("1m", [&] {
        SqliteJournal journal(file);
        if (!journal.write(batchOf(0))) {
            return 1;
        }
        fill(disk / "filler");
        int written = 1;
        while (written < 200 && journal.write(largeBatch(written))) { // into room that the log has
            ++written;
        }
        if (written == 200 || journal.state() != Journal::State::cannotWrite || journal.problem().empty()) {
            return 2;
        }
        if (allOf(journal).periods.size() != static_cast<std::size_t>(written)) {
            return 3;
        }
        fs::remove(disk / "filler");
        if (!journal.write(largeBatch(written))) {
            return 4;
        }
        if (journal.state() != Journal::State::writes || !journal.problem().empty()) {
            return 5;
        }
        SqliteJournal reader(file);
        return allOf(reader).periods.size() == static_cast<std::size_t>(written) + 1 ? 0 : 6;
    });
}

TEST_F(JournalDisk, BeginsOnceThereIsRoom) {
    onSmallDisk("1m", [&] {
        fill(disk / "filler");
        SqliteJournal journal(file);
        if (journal.write(batchOf(0)) || journal.state() != Journal::State::cannotWrite) {
            return 1;
        }
        fs::remove(disk / "filler");
        return journal.write(batchOf(1)) && allOf(journal).periods == std::vector{minuteOf(1)} ? 0 : 2;
    });
}

TEST_F(JournalDisk, ClearsWhereThereIsNoRoom) {
    onSmallDisk("1m", [&] {
        SqliteJournal journal(file);
        if (!journal.write(largeBatch(0))) {
            return 1;
        }
        fill(disk / "filler");
        if (!journal.clear() || !allOf(journal).gaps.empty()) {
            return 2;
        }
        fs::remove(disk / "filler");
        return journal.write(batchOf(1)) && allOf(journal).periods == std::vector{minuteOf(1)} ? 0 : 3;
    });
}

TEST_F(JournalDisk, WriteProtectedIsReadOnly) {
    onSmallDisk("1m", [&] {
        {
            SqliteJournal journal(file);
            if (!journal.write(batchOf(0))) {
                return 1;
            }
        }
        if (!protectFromWriting(disk)) {
            return noMounts;
        }
        SqliteJournal journal(file);
        if (journal.open() != Journal::State::cannotWrite || journal.problem().empty()) {
            return 2;
        }
        return journal.write(batchOf(1)) || journal.clear() ? 3 : 0;
    });
}

TEST_F(JournalDisk, AFolderThatMayNotBeWrittenToIsLeftAlone) {
    const Unprivileged ordinary;
    if (!ordinary.isOrdinary()) {
        TARNWICK_CANNOT_RUN("permissions do not hold");
    }
    const fs::path closed = disk / "closed";
    fs::create_directory(closed);
    ::chmod(closed.c_str(), 0500);
    SqliteJournal journal(closed / "journal.sqlite");

    EXPECT_EQ(journal.open(), Journal::State::cannotWrite);
    EXPECT_FALSE(journal.write(batchOf(0)));
    EXPECT_NE(journal.problem(), "");
    EXPECT_EQ(fileCount(closed), 0);
}

TEST_F(JournalDisk, AFileThatMayNotBeWrittenToIsReadOnly) {
    const Unprivileged ordinary;
    if (!ordinary.isOrdinary()) {
        TARNWICK_CANNOT_RUN("permissions do not hold");
    }
    {
        SqliteJournal journal(file);
        ASSERT_TRUE(journal.write(batchOf(0)));
    }
    ::chmod(file.c_str(), 0400);
    SqliteJournal journal(file);

    EXPECT_EQ(journal.open(), Journal::State::cannotWrite);
    EXPECT_FALSE(journal.write(batchOf(1)));
    EXPECT_NE(journal.problem(), "");
    EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(0)});
}

} // namespace
} // namespace tarnwick
