// Pings booked by the minute in which they were sent.
#include "core/History/MinuteBook.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;

TEST(MinuteBook, IsEmptyAtFirstAndOnceItWasTaken) {
    MinuteBook book;
    EXPECT_TRUE(book.isEmpty());
    book.sent(at("2026-11-23 10:00"));
    EXPECT_FALSE(book.isEmpty());

    EXPECT_EQ(book.take().size(), 1U);
    EXPECT_TRUE(book.isEmpty());
    EXPECT_TRUE(book.take().empty());
}

TEST(MinuteBook, BooksAnOutcomeInTheMinuteOfTheSending) {
    MinuteBook book;
    book.sent(at("2026-11-23 10:00:59"));
    book.sent(at("2026-11-23 10:01:00"));
    book.replied(at("2026-11-23 10:00:59"), 4000);
    book.lost(at("2026-11-23 10:01:00"));

    const std::vector<Period> minutes = book.take();

    ASSERT_EQ(minutes.size(), 2U);
    EXPECT_EQ(minutes[0].start, at("2026-11-23 10:00"));
    EXPECT_EQ(minutes[0].length, PeriodLength::minute);
    EXPECT_EQ(minutes[0].figures.sent, 1);
    EXPECT_EQ(minutes[0].figures.replied, 1);
    EXPECT_EQ(minutes[0].figures.slowestMs, 4000);
    EXPECT_EQ(minutes[1].start, at("2026-11-23 10:01"));
    EXPECT_EQ(minutes[1].figures.sent, 1);
    EXPECT_EQ(minutes[1].figures.lost, 1);
}

TEST(MinuteBook, BooksTheTimeWatched) {
    MinuteBook book;
    for (int second = 0; second < 90; ++second) {
        book.watched(at("2026-11-23 10:00") + std::chrono::seconds(second), 1);
    }

    const std::vector<Period> minutes = book.take();

    ASSERT_EQ(minutes.size(), 2U);
    EXPECT_EQ(minutes[0].figures.watchedSeconds, 60);
    EXPECT_EQ(minutes[1].figures.watchedSeconds, 30);
}

TEST(MinuteBook, JitterGoesOnOverMinutesAndTakes) {
    MinuteBook book;
    book.replied(at("2026-11-23 10:00:58"), 20);
    (void)book.take();
    book.replied(at("2026-11-23 10:01:03"), 26);

    EXPECT_EQ(book.take().at(0).figures.jitterMs(), 6);
}

TEST(MinuteBook, JitterBeginsAnewAfterAnInterruption) {
    MinuteBook book;
    book.replied(at("2026-11-23 10:00:01"), 20);
    book.interrupted();
    book.replied(at("2026-11-23 10:00:40"), 90);
    book.replied(at("2026-11-23 10:00:45"), 92);

    EXPECT_EQ(book.take().at(0).figures.jitterMs(), 2);
}

TEST(MinuteBook, ClockSetBackBooksIntoTheMinuteThatWasThere) {
    MinuteBook book;
    book.sent(at("2026-11-23 10:00:30"));
    book.sent(at("2026-11-23 11:00:00"));
    book.sent(at("2026-11-23 10:00:31")); // an hour back

    const std::vector<Period> minutes = book.take();

    ASSERT_EQ(minutes.size(), 2U);
    EXPECT_EQ(minutes[0].figures.sent, 2);
    EXPECT_EQ(minutes[1].figures.sent, 1);
}

TEST(MinuteBook, BooksTimesBefore1970InTheirMinute) {
    MinuteBook book;
    book.sent(at("1969-12-31 23:59:30"));

    EXPECT_EQ(book.take().at(0).start, at("1969-12-31 23:59"));
}

} // namespace
} // namespace tarnwick
