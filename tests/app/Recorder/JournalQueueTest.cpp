// What waits for the journal: what joins, what goes when there is too much, and in which order it is written.
#include "app/Recorder/JournalQueue.h"
#include "tests/simulation/RecordingJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* oneHost = "one.example";
constexpr const char* otherHost = "two.example";

class JournalQueueTest : public testing::Test {
protected:
    JournalQueueTest() { queue.setHost(oneHost); }

    [[nodiscard]] static HistoryTime minuteAt(int number) {
        return std::chrono::sys_days(std::chrono::year(2026) / 11 / 23) + std::chrono::minutes(number);
    }

    [[nodiscard]] static Period minute(int number, std::int64_t sent = 1) {
        return {.start = minuteAt(number), .figures = {.sent = sent}};
    }

    [[nodiscard]] static Episode outage(int from) { return {.start = minuteAt(from)}; }

    [[nodiscard]] static Gap gapOf(int from, int to) {
        return {.kind = Gap::Kind::paused, .span = {.from = minuteAt(from), .to = minuteAt(to)}};
    }

    /// What a full disk would not take.
    void tryToWrite() {
        journal.setState(Journal::State::cannotWrite);
        queue.write(journal, minuteAt(0));
        journal.setState(Journal::State::writes);
    }

    [[nodiscard]] const std::vector<Journal::Batch>& written() {
        queue.write(journal, minuteAt(100));
        return journal.batches;
    }

    void putMany(int first, int count) {
        for (int number = first; number < first + count; ++number) {
            queue.put(minute(number));
            queue.put(outage(number));
            queue.put(gapOf(number, number + 1));
        }
    }

    simulation::RecordingJournal journal;
    JournalQueue queue;
};

TEST_F(JournalQueueTest, PartsOfAMinuteAreOne) {
    queue.put(minute(0, 20));
    queue.put(minute(1, 5));
    queue.put(minute(0, 40));

    EXPECT_THAT(written().at(0).minutes, ElementsAre(minute(0, 60), minute(1, 5)));
}

TEST_F(JournalQueueTest, WhatIsKnownLaterTakesThePlaceOfWhatWasBefore) {
    Episode ended = outage(3);
    ended.end = minuteAt(4);
    queue.put(outage(3));
    queue.put(ended);
    queue.put(gapOf(5, 6));
    queue.put(gapOf(5, 9));
    const Gap asleep{.kind = Gap::Kind::asleep, .span = gapOf(5, 7).span};
    queue.put(asleep);
    const Episode degradation{.kind = Episode::Kind::degradation, .start = minuteAt(3)};
    queue.put(degradation);

    EXPECT_THAT(written().at(0).episodes, ElementsAre(ended, degradation));
    EXPECT_THAT(journal.batches[0].gaps, ElementsAre(gapOf(5, 9), asleep));
}

TEST_F(JournalQueueTest, WhatIsWithdrawnIsNotWritten) {
    queue.put(outage(3));
    queue.put(outage(4));
    queue.put(gapOf(5, 6));

    EXPECT_TRUE(queue.withdraw(outage(3)));
    EXPECT_FALSE(queue.withdraw(outage(3)));
    EXPECT_TRUE(queue.withdraw(gapOf(5, 6)));

    EXPECT_THAT(written().at(0).episodes, ElementsAre(outage(4)));
    EXPECT_THAT(journal.batches[0].gaps, IsEmpty());
    EXPECT_FALSE(queue.withdraw(outage(4))) << "it is written";
}

TEST_F(JournalQueueTest, HostsAreWrittenOneAfterTheOther) {
    queue.put(minute(0));
    queue.setHost(otherHost);
    queue.put(minute(1));
    queue.setHost(oneHost);
    queue.put(minute(2));

    const auto& batches = written();

    ASSERT_THAT(batches, SizeIs(3));
    EXPECT_EQ(batches[0].host, oneHost);
    EXPECT_EQ(batches[1].host, otherHost);
    EXPECT_THAT(batches[1].minutes, ElementsAre(minute(1)));
    EXPECT_EQ(batches[2].host, oneHost);
    EXPECT_EQ(batches[2].until, minuteAt(100));
}

TEST_F(JournalQueueTest, HowFarTheRecordingHasComeIsWrittenAlways) {
    EXPECT_THAT(written(), SizeIs(1));
    EXPECT_EQ(journal.until(), minuteAt(100));
    EXPECT_EQ(journal.batches[0].host, oneHost);
}

TEST_F(JournalQueueTest, WhatIsNotTakenWaits) {
    queue.put(minute(0));
    tryToWrite();
    queue.put(minute(1));

    EXPECT_THAT(written().at(0).minutes, ElementsAre(minute(0), minute(1)));
    EXPECT_THAT(written(), SizeIs(2));
    EXPECT_THAT(journal.batches[1].minutes, IsEmpty());
}

TEST_F(JournalQueueTest, WhatIsTooMuchGoesOldestFirstWhicheverHostItIsOf) {
    constexpr int most = static_cast<int>(JournalQueue::mostEntries);
    putMany(0, 1000);
    queue.setHost(otherHost);
    putMany(1000, 1000);
    tryToWrite();

    const auto& batches = written();

    ASSERT_THAT(batches, SizeIs(2));
    ASSERT_THAT(batches[0].minutes, SizeIs(most - 1000));
    EXPECT_EQ(batches[0].minutes[0], minute(2000 - most));
    ASSERT_THAT(batches[0].episodes, SizeIs(most - 1000));
    EXPECT_EQ(batches[0].episodes[0], outage(2000 - most));
    ASSERT_THAT(batches[0].gaps, SizeIs(most - 1000));
    EXPECT_EQ(batches[0].gaps[0], gapOf(2000 - most, 2001 - most));
    EXPECT_THAT(batches[1].minutes, SizeIs(1000));
    EXPECT_THAT(batches[1].episodes, SizeIs(1000));
    EXPECT_THAT(batches[1].gaps, SizeIs(1000));
}

TEST_F(JournalQueueTest, HostsOfWhichNothingWaitsGo) {
    for (int host = 0; host < 50; ++host) {
        queue.setHost("host" + std::to_string(host) + ".example");
        tryToWrite();
    }
    EXPECT_THAT(written(), SizeIs(1));
}

TEST_F(JournalQueueTest, OfAHostItTellsWhatWaitsOfItAndEveryGap) {
    queue.put(minute(0, 20));
    queue.put(outage(0));
    queue.put(gapOf(1, 2));
    queue.setHost(otherHost);
    queue.put(minute(1));
    queue.put(outage(1));
    queue.put(gapOf(3, 4));
    const Period hour{.start = minuteAt(0), .length = PeriodLength::hour, .figures = {.sent = 3600}};
    History known{.periods = {minute(0, 40), hour}, .gaps = {gapOf(1, 3)}};

    queue.addTo(known, oneHost);

    EXPECT_THAT(known.periods, ElementsAre(minute(0, 60), hour));
    EXPECT_THAT(known.episodes, ElementsAre(outage(0)));
    EXPECT_THAT(known.gaps, ElementsAre(gapOf(1, 2), gapOf(3, 4)));
    EXPECT_THAT(written(), SizeIs(2)) << "telling took something away";
}

TEST_F(JournalQueueTest, ClearedItHasNothing) {
    putMany(0, 3);
    queue.clear();

    EXPECT_THAT(written().at(0).minutes, IsEmpty());
    EXPECT_THAT(journal.batches[0].episodes, IsEmpty());
    EXPECT_THAT(journal.batches[0].gaps, IsEmpty());
}

} // namespace
} // namespace tarnwick
