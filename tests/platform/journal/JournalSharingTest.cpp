// Two programs with one journal.
#include "platform/journal/SqliteJournal.h"

#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

class JournalSharing : public testing::Test {
protected:
    JournalSharing() { first->open(); }

    TemporaryFolder folder;
    fs::path file = folder.path() / "journal.sqlite";
    std::optional<SqliteJournal> first{file};
    SqliteJournal second{file};
};

TEST_F(JournalSharing, OnlyTheFirstWrites) {
    EXPECT_EQ(second.open(), Journal::State::otherWrites);
    EXPECT_FALSE(second.write(batchOf(0)));
    EXPECT_TRUE(first->write(batchOf(1)));

    EXPECT_EQ(allOf(second).periods, std::vector{minuteOf(1)});
    EXPECT_EQ(second.until(), minuteNumber(2));
    EXPECT_EQ(second.problem(), "");
}

TEST_F(JournalSharing, TheSecondReadsWhileTheFirstWrites) {
    for (int minute = 0; minute < 50; ++minute) {
        ASSERT_TRUE(first->write(batchOf(minute)));
        ASSERT_EQ(allOf(second).periods.size(), static_cast<std::size_t>(minute + 1));
    }
}

TEST_F(JournalSharing, TheSecondTakesOverWhenTheFirstHasEnded) {
    Journal::Batch batch = batchOf(0);
    batch.episodes = {{.start = minuteNumber(0)}};
    ASSERT_TRUE(first->write(batch));
    ASSERT_FALSE(second.write(batchOf(1)));
    first.reset();

    EXPECT_TRUE(second.write(batchOf(2)));

    EXPECT_EQ(second.state(), Journal::State::writes);
    EXPECT_EQ(allOf(second).periods, (std::vector{minuteOf(0), minuteOf(2)}));
    EXPECT_EQ(allOf(second).episodes[0].end, minuteNumber(1));
}

TEST_F(JournalSharing, TheSecondMayClear) {
    ASSERT_TRUE(first->write(batchOf(0)));

    EXPECT_TRUE(second.clear());

    EXPECT_TRUE(allOf(*first).periods.empty());
    EXPECT_TRUE(first->write(batchOf(1)));
    EXPECT_EQ(allOf(second).periods, std::vector{minuteOf(1)});
}

TEST_F(JournalSharing, TheWriterLearnsThatTheOtherHasCleared) {
    EXPECT_FALSE(first->wasCleared()) << "there was nothing";
    ASSERT_TRUE(first->write(batchOf(0)));
    EXPECT_FALSE(first->wasCleared());

    ASSERT_TRUE(second.clear());

    EXPECT_TRUE(first->wasCleared());
    EXPECT_FALSE(second.wasCleared()) << "it does not write";
    ASSERT_TRUE(first->write(batchOf(1)));
    EXPECT_FALSE(first->wasCleared());
}

TEST_F(JournalSharing, TheWriterLearnsThatWhatItHasFoundWasCleared) {
    ASSERT_TRUE(first->write(batchOf(0)));
    first.emplace(file);
    ASSERT_EQ(first->open(), Journal::State::writes);

    ASSERT_TRUE(second.clear());

    EXPECT_TRUE(first->wasCleared());
}

TEST_F(JournalSharing, TheWriterKnowsOfItsOwnClearing) {
    ASSERT_TRUE(first->write(batchOf(0)));
    ASSERT_TRUE(first->clear());

    EXPECT_FALSE(first->wasCleared());
}

TEST_F(JournalSharing, AFileThatWasRemovedWasNotCleared) {
    ASSERT_TRUE(first->write(batchOf(0)));
    fs::remove(file);
    ASSERT_EQ(first->open(), Journal::State::writes);

    EXPECT_FALSE(first->wasCleared());
}

TEST_F(JournalSharing, AWriterWhoseLockWasRemovedStopsWhenAnotherHasIt) {
    ASSERT_TRUE(first->write(batchOf(0)));
    fs::remove(file.string() + ".lock");
    ASSERT_TRUE(second.write(batchOf(1)));

    EXPECT_FALSE(first->write(batchOf(2)));
    EXPECT_EQ(first->state(), Journal::State::otherWrites);
}

} // namespace
} // namespace tarnwick
