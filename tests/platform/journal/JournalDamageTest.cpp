// Files in the journal's place that are none, or not for this version.
#include "platform/journal/Database.h"
#include "platform/journal/JournalSchema.h"
#include "platform/journal/SqliteJournal.h"

#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sys/stat.h>
#include <vector>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

class JournalDamage : public testing::Test {
protected:
    /// A year of hours and a week of outages, closed as a program that ends leaves it.
    void makeJournal() const {
        SqliteJournal journal(file);
        Journal::Batch batch{.host = journalHost, .until = minuteNumber(1)};
        for (int minute = 0; minute < 3000; ++minute) {
            batch.minutes.push_back(minuteOf(minute));
        }
        ASSERT_TRUE(journal.write(batch));
    }

    [[nodiscard]] std::vector<fs::path> brokenOnes() const {
        std::vector<fs::path> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with("journal.sqlite.broken-")) {
                found.push_back(entry.path());
            }
        }
        return found;
    }

    /// Of the files in the folder, in their order.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        std::ranges::sort(found);
        return found;
    }

    /// The file was kept as it was under a dated name, and a new one is written to.
    void expectToBePutAside(const std::string& content) const {
        SqliteJournal journal(file);
        EXPECT_EQ(journal.open(), Journal::State::writes) << journal.problem();
        ASSERT_EQ(brokenOnes().size(), 1U);
        const fs::path broken = brokenOnes()[0];
        EXPECT_THAT(broken.filename().string(), testing::MatchesRegex(R"(.*-20[0-9]{2}-[0-9]{2}-[0-9]{2})"));
        EXPECT_EQ(contentOf(broken), content);
        EXPECT_THAT(journal.problem(), HasSubstr(broken.string()));
        EXPECT_TRUE(journal.write(batchOf(7)));
        EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(7)});
        EXPECT_THAT(journal.problem(), HasSubstr(broken.string()));
    }

    void expectNothingWritten(const std::string& problem) {
        SqliteJournal journal(file);
        EXPECT_EQ(journal.open(), Journal::State::cannotWrite);
        EXPECT_THAT(journal.problem(), HasSubstr(problem));
        EXPECT_FALSE(journal.write(batchOf(0)));
        EXPECT_TRUE(allOf(journal).periods.empty());
        EXPECT_TRUE(brokenOnes().empty());
    }

    TemporaryFolder folder;
    fs::path file = folder.path() / "journal.sqlite";
};

TEST_F(JournalDamage, GarbageIsPutAside) {
    const std::string garbage = "no journal at all, but a text of some length\n";
    writeFile(file, garbage);

    expectToBePutAside(garbage);
}

TEST_F(JournalDamage, ATruncatedFileIsPutAside) {
    makeJournal();
    fs::resize_file(file, fs::file_size(file) / 2);

    expectToBePutAside(contentOf(file));
}

TEST_F(JournalDamage, FlippedBytesArePutAside) {
    makeJournal();
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        for (std::streamoff page = 4096; page < static_cast<std::streamoff>(fs::file_size(file));
             page += 4096) {
            bytes.seekp(page);
            bytes.write("\xff\x5a\xff\x5a\xff\x5a\xff\x5a", 8);
        }
    }
    expectToBePutAside(contentOf(file));
}

TEST_F(JournalDamage, AForeignDatabaseIsPutAside) {
    writeFile(file, "");
    {
        Database foreign(file, Database::Access::write, 0);
        ASSERT_TRUE(foreign.execute("CREATE TABLE notes (text TEXT)"));
    }
    expectToBePutAside(contentOf(file));
}

TEST_F(JournalDamage, AJournalWithoutATableIsPutAside) {
    makeJournal();
    {
        Database database(file, Database::Access::write, 0);
        ASSERT_TRUE(database.execute("DROP TABLE gaps"));
    }
    expectToBePutAside(contentOf(file));
}

TEST_F(JournalDamage, TablesOfTheLibraryItselfAreNoDamage) {
    makeJournal();
    {
        Database database(file, Database::Access::write, 0);
        ASSERT_TRUE(database.execute("ANALYZE"));
    }
    SqliteJournal journal(file);

    EXPECT_EQ(journal.open(), Journal::State::writes);
    EXPECT_TRUE(brokenOnes().empty());
    EXPECT_FALSE(allOf(journal).periods.empty());
}

TEST_F(JournalDamage, BrokenOnesOfOneDayHaveNamesOfTheirOwn) {
    for (const char* garbage : {"one", "two", "three"}) {
        writeFile(file, garbage);
        SqliteJournal journal(file);
        ASSERT_EQ(journal.open(), Journal::State::writes);
    }
    EXPECT_EQ(brokenOnes().size(), 3U);
}

TEST_F(JournalDamage, ClearingRemovesBrokenOnesToo) {
    writeFile(file, "garbage");
    SqliteJournal journal(file);
    ASSERT_EQ(journal.open(), Journal::State::writes);
    ASSERT_EQ(brokenOnes().size(), 1U);

    EXPECT_TRUE(journal.clear());

    EXPECT_TRUE(brokenOnes().empty());
    EXPECT_EQ(journal.problem(), "");
}

TEST_F(JournalDamage, ClearingRemovesABrokenOneThatNobodyWrites) {
    makeJournal();
    fs::resize_file(file, fs::file_size(file) / 2);
    writeFile(file.string() + "-wal", "a log");
    writeFile(file.string() + "-shm", "its index");
    writeFile(file.string() + ".broken-2026-01-01", "of before");
    writeFile(file.string() + ".broken-2026-01-01-wal", "its log");
    SqliteJournal switchedOff(file);

    EXPECT_TRUE(switchedOff.clear());

    EXPECT_THAT(names(), ElementsAre("journal.sqlite.lock"));
    SqliteJournal journal(file);
    EXPECT_EQ(journal.open(), Journal::State::writes) << "the lock was kept";
    EXPECT_EQ(journal.problem(), "");
}

TEST_F(JournalDamage, ClearingRemovesALogWithoutItsFile) {
    writeFile(file.string() + "-wal", "a log");
    writeFile(file.string() + "-shm", "its index");

    EXPECT_TRUE(SqliteJournal(file).clear());

    EXPECT_THAT(names(), ElementsAre("journal.sqlite.lock"));
}

TEST_F(JournalDamage, ClearingTellsWhatCannotBeRemoved) {
    fs::create_directories(file.string() + "-wal/inside");
    EXPECT_FALSE(SqliteJournal(file).clear());

    fs::remove_all(file.string() + "-wal");
    makeJournal();
    fs::create_directories(file.string() + ".broken-2026-01-01/inside");
    EXPECT_FALSE(SqliteJournal(file).clear());
}

TEST_F(JournalDamage, ClearingLeavesABrokenOneToWhoWritesIt) {
    SqliteJournal writer(file);
    ASSERT_EQ(writer.open(), Journal::State::writes);
    fs::remove(file.string() + "-wal");
    writeFile(file, "garbage");

    EXPECT_FALSE(SqliteJournal(file).clear());

    EXPECT_EQ(contentOf(file), "garbage");
}

TEST_F(JournalDamage, ClearingDoesNotTakeALinkForWhatItLeadsTo) {
    const fs::path elsewhere = folder.path() / "elsewhere";
    writeFile(elsewhere, "garbage");
    fs::create_symlink(elsewhere, file);

    EXPECT_FALSE(SqliteJournal(file).clear());

    EXPECT_THAT(names(), ElementsAre("elsewhere", "journal.sqlite", "journal.sqlite.lock"));
}

TEST_F(JournalDamage, ClearingRemovesOneOfANewerVersionAndBeginsAnother) {
    makeJournal();
    {
        Database newer(file, Database::Access::write, 0);
        ASSERT_TRUE(newer.execute("PRAGMA user_version = 2"));
    }
    SqliteJournal journal(file);
    ASSERT_EQ(journal.open(), Journal::State::newerFile);

    EXPECT_TRUE(journal.clear());

    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(journal.write(batchOf(7)));
    EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(7)});
}

TEST_F(JournalDamage, AFileThatBreaksWhileItIsWrittenIsPutAside) {
    SqliteJournal journal(file);
    Journal::Batch batch = batchOf(0);
    for (int minute = 1; minute < 3000; ++minute) {
        batch.minutes.push_back(minuteOf(minute));
    }
    ASSERT_TRUE(journal.write(batch));
    {
        // As another program would: what is in the log goes to the file, then the file is overwritten.
        Database other(file, Database::Access::write, 0);
        ASSERT_EQ(other.number("PRAGMA wal_checkpoint(TRUNCATE)"), 0);
    }
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        const std::string zeros(fs::file_size(file), '\0');
        bytes.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
    }
    {
        Database other(file, Database::Access::write, 0);
        other.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    EXPECT_FALSE(journal.write(batchOf(9000)));
    EXPECT_NE(journal.problem(), "");

    EXPECT_TRUE(journal.write(batchOf(9000)));
    EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(9000)});
    EXPECT_EQ(brokenOnes().size(), 1U);
}

TEST_F(JournalDamage, AFileOfANewerVersionStaysAsItIs) {
    makeJournal();
    {
        Database newer(file, Database::Access::write, 0);
        ASSERT_TRUE(newer.execute("CREATE TABLE more (what TEXT); PRAGMA user_version = 2"));
    }
    const std::string content = contentOf(file);
    {
        SqliteJournal journal(file);
        EXPECT_EQ(journal.open(), Journal::State::newerFile);
        EXPECT_THAT(journal.problem(), HasSubstr("newer"));
        EXPECT_FALSE(journal.write(batchOf(9000)));
        EXPECT_EQ(journal.state(), Journal::State::newerFile);
    }
    EXPECT_EQ(contentOf(file), content);
    EXPECT_TRUE(brokenOnes().empty());
}

TEST_F(JournalDamage, WhatANewerVersionLeftInItsLogStaysThere) {
    makeJournal();
    fs::path log = file;
    log += "-wal";
    {
        Database newer(file, Database::Access::write, 0);
        newer.setMovesOnClose(false);
        ASSERT_TRUE(newer.execute("PRAGMA user_version = 2"));
    }
    const std::string content = contentOf(file);
    const std::string logged = contentOf(log);
    ASSERT_NE(logged, "");
    {
        SqliteJournal journal(file);
        EXPECT_EQ(journal.open(), Journal::State::newerFile);
    }
    EXPECT_EQ(contentOf(file), content);
    EXPECT_EQ(contentOf(log), logged);
}

TEST_F(JournalDamage, AFolderInItsPlaceStays) {
    fs::create_directory(file);

    expectNothingWritten("directory");
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(JournalDamage, APipeInItsPlaceStaysAndHoldsNothingUp) {
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);

    expectNothingWritten("regular file");
    EXPECT_TRUE(fs::is_fifo(file));
}

} // namespace
} // namespace tarnwick
