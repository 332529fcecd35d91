// A program that is killed while it writes.
#include "platform/journal/SqliteJournal.h"

#include "tests/core/ChildProcess.h"
#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr int kills = 300;
/// More than a child writes before it is killed.
constexpr std::int64_t minutesOfARound = 1000;

/// A minute and a gap at once: both are kept, or none is.
Journal::Batch pairOf(std::int64_t number) {
    Journal::Batch batch = batchOf(number);
    batch.gaps = {{.span = minuteSpan(number, 1)}};
    return batch;
}

TEST(JournalKill, LosesNothingThatWasWrittenAndKeepsNoHalfOfABatch) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "journal.sqlite";
    for (int round = 0; round < kills; ++round) {
        const std::int64_t first = round * minutesOfARound;
        ChildProcess writer([&](const ChildProcess::Report& report) {
            SqliteJournal journal(file);
            for (std::int64_t number = first; number < first + minutesOfARound; ++number) {
                if (!journal.write(pairOf(number))) {
                    return 1;
                }
                report();
            }
            ::pause();
            return 0;
        });
        ASSERT_TRUE(writer.hasReported());
        // Each time a little later in the writing of a batch, or in the making of the next ones.
        ::usleep(static_cast<useconds_t>(round) * 7 % 1000);
        writer.kill();
        std::int64_t reported = 1;
        while (writer.hasReported()) {
            ++reported;
        }

        SqliteJournal journal(file);
        ASSERT_EQ(journal.open(), Journal::State::writes);
        ASSERT_EQ(journal.problem(), "") << "in round " << round;
        const History history = journal.read(journalHost, minuteSpan(first, minutesOfARound));
        const auto kept = static_cast<std::int64_t>(history.periods.size());
        ASSERT_GE(kept, reported) << "in round " << round;
        ASSERT_LE(kept, reported + 1) << "in round " << round;
        ASSERT_EQ(history.gaps.size(), history.periods.size()) << "in round " << round;
        ASSERT_EQ(journal.until(), minuteNumber(first + kept)) << "in round " << round;
    }
}

} // namespace
} // namespace tarnwick
