// A long span as a chart shows it.
#include "core/History/ChartBuckets.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::goodPeriod;
using test::outage;

const Span fourMinutes = between("2026-01-01 10:00", "2026-01-01 10:04");

TEST(ChartBuckets, ShareTheSpanWithoutARest) {
    const auto buckets = chartBuckets({}, between("2026-01-01 10:00", "2026-01-01 10:05"), 7);

    ASSERT_EQ(buckets.size(), 7U);
    EXPECT_EQ(buckets.front().span.from, at("2026-01-01 10:00"));
    EXPECT_EQ(buckets.back().span.to, at("2026-01-01 10:05"));
    for (std::size_t index = 1; index < buckets.size(); ++index) {
        EXPECT_EQ(buckets[index].span.from, buckets[index - 1].span.to);
    }
}

TEST(ChartBuckets, ShowTheSlowestAnswerAndTheLoss) {
    History history{.until = fourMinutes.to};
    history.periods = {
        goodPeriod(at("2026-01-01 10:00"), PeriodLength::minute, 20),
        goodPeriod(at("2026-01-01 10:01"), PeriodLength::minute, 300),
        goodPeriod(at("2026-01-01 10:02"), PeriodLength::minute, 40)};
    history.periods[1].figures.lost = 4;

    const auto buckets = chartBuckets(history, fourMinutes, 2);

    EXPECT_EQ(buckets[0].slowestMs, 300);
    EXPECT_DOUBLE_EQ(buckets[0].lossShare, 4.0 / 28);
    EXPECT_EQ(buckets[1].slowestMs, 40);
    EXPECT_EQ(buckets[1].lossShare, 0);
}

TEST(ChartBuckets, WithoutAnswersShowNoLatency) {
    History history{.until = fourMinutes.to};
    history.periods = {{.start = fourMinutes.from, .figures = {.sent = 12, .lost = 12}}};

    const auto buckets = chartBuckets(history, fourMinutes, 4);

    EXPECT_EQ(buckets[0].slowestMs, std::nullopt);
    EXPECT_EQ(buckets[0].lossShare, 1);
    EXPECT_EQ(buckets[1].slowestMs, std::nullopt);
    EXPECT_EQ(buckets[1].lossShare, 0);
}

TEST(ChartBuckets, ShorterThanAPeriodShowItEach) {
    History history{.until = at("2026-01-01 11:00")};
    history.periods = {goodPeriod(at("2026-01-01 10:00"), PeriodLength::hour, 70)};
    history.periods[0].figures.lost = history.periods[0].figures.replied;

    for (const HistoryBucket& bucket :
         chartBuckets(history, between("2026-01-01 10:00", "2026-01-01 11:00"), 60)) {
        EXPECT_EQ(bucket.slowestMs, 70);
        EXPECT_DOUBLE_EQ(bucket.lossShare, 0.5);
    }
}

TEST(ChartBuckets, ShowGapsAndOutagesWhereTheyWere) {
    History history{.until = fourMinutes.to};
    history.gaps = {
        {.kind = Gap::Kind::asleep, .span = between("2026-01-01 10:01:30", "2026-01-01 10:03:00")}};
    // Beginning before the gap, and ending in it.
    history.episodes = {outage("2026-01-01 10:00:50", "2026-01-01 10:02:30")};

    const auto buckets = chartBuckets(history, fourMinutes, 4);

    EXPECT_EQ(buckets[0].gapShare, 0);
    EXPECT_TRUE(buckets[0].isDown);
    EXPECT_EQ(buckets[1].gapShare, 0.5);
    EXPECT_TRUE(buckets[1].isDown);
    EXPECT_EQ(buckets[2].gapShare, 1);
    EXPECT_FALSE(buckets[2].isDown);
    EXPECT_FALSE(buckets[3].isDown);
}

TEST(ChartBuckets, ShowAnOutageThatLasts) {
    History history{.until = at("2026-01-01 10:03")};
    history.episodes = {{.start = at("2026-01-01 10:02:30")}};

    const auto buckets = chartBuckets(history, fourMinutes, 4);

    EXPECT_FALSE(buckets[1].isDown);
    EXPECT_TRUE(buckets[2].isDown);
    EXPECT_FALSE(buckets[3].isDown);
}

TEST(ChartBuckets, OfNoTimeShowNothing) {
    const Span none{.from = fourMinutes.from, .to = fourMinutes.from};

    EXPECT_EQ(chartBuckets({}, none, 1), (std::vector{HistoryBucket{.span = none}}));
}

} // namespace
} // namespace tarnwick
