// Counts of pings and the figures of their round trips.
#include "core/StatCounter.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarnwick {
namespace {

StatCounter counterWithReplies(std::initializer_list<double> times) {
    StatCounter counter;
    for (const double ms : times) {
        counter.addPingResponse(ms);
    }
    return counter;
}

TEST(StatCounter, BeginsEmptyAndWithoutLoss) {
    const StatCounter fresh;
    EXPECT_TRUE(fresh.isEmpty());
    EXPECT_EQ(fresh.lossPercent(), 0);
    EXPECT_EQ(fresh, (StatCounter{0, 0, 0, 0, 0, 0}));
}

TEST(StatCounter, IsNotEmptyOnceAPingIsSent) {
    StatCounter counter;
    counter.addPingSent();
    EXPECT_FALSE(counter.isEmpty());
    EXPECT_EQ(counter.sent, 1);
}

TEST(StatCounter, IsNotEmptyWithAReplyOrALossAlone) {
    EXPECT_FALSE((StatCounter{.replied = 1}).isEmpty());
    EXPECT_FALSE((StatCounter{.lost = 1}).isEmpty());
}

TEST(StatCounter, IsEmptyWhateverItsTimesAre) {
    EXPECT_TRUE((StatCounter{.averageMs = 5, .fastestMs = 5, .slowestMs = 5}).isEmpty());
}

TEST(StatCounter, CountsALoss) {
    StatCounter counter;
    counter.addPingTimeout();
    EXPECT_EQ(counter, (StatCounter{.lost = 1}));
}

TEST(StatCounter, KeepsMeanFastestAndSlowestOfItsReplies) {
    EXPECT_EQ(
        counterWithReplies({30, 10, 20}),
        (StatCounter{.replied = 3, .averageMs = 20, .fastestMs = 10, .slowestMs = 30}));
}

TEST(StatCounter, TakesItsFirstReplyAsFastestAndSlowest) {
    EXPECT_EQ(
        counterWithReplies({12.5}),
        (StatCounter{.replied = 1, .averageMs = 12.5, .fastestMs = 12.5, .slowestMs = 12.5}));
}

TEST(StatCounter, ReplacesAFastestOfZeroByTheNextReply) {
    EXPECT_EQ(counterWithReplies({0, 25}).fastestMs, 25);
}

TEST(StatCounter, LeavesLossesOutOfTheMean) {
    StatCounter counter = counterWithReplies({10});
    counter.addPingTimeout();
    counter.addPingResponse(30);
    EXPECT_EQ(counter.averageMs, 20);
}

TEST(StatCounter, ContinuesAStoredMean) {
    StatCounter counter{.sent = 3, .replied = 3, .averageMs = 20, .fastestMs = 10, .slowestMs = 30};
    counter.addPingResponse(60);
    EXPECT_EQ(counter.averageMs, 30);
    EXPECT_EQ(counter.slowestMs, 60);
    EXPECT_EQ(counter.fastestMs, 10);
}

TEST(StatCounter, GivesItsLossInPercentOfThePingsSent) {
    EXPECT_EQ((StatCounter{.sent = 8, .lost = 1}).lossPercent(), 12.5);
    EXPECT_EQ((StatCounter{.sent = 1, .lost = 1}).lossPercent(), 100);
}

TEST(StatCounter, NeverShowsMoreThanFullLoss) {
    EXPECT_EQ((StatCounter{.sent = 3, .lost = 4}).lossPercent(), 100);
}

TEST(StatCounter, HasNoLossWithoutPingsSent) {
    EXPECT_EQ((StatCounter{.sent = 0, .lost = 4}).lossPercent(), 0);
    EXPECT_EQ((StatCounter{.sent = -5, .lost = 4}).lossPercent(), 0);
}

TEST(StatCounter, IsEqualOnlyWhenAllItsFieldsAre) {
    const StatCounter counter{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(counter, (StatCounter{1, 2, 3, 4, 5, 6}));
    EXPECT_NE(counter, (StatCounter{0, 2, 3, 4, 5, 6}));
    EXPECT_NE(counter, (StatCounter{1, 0, 3, 4, 5, 6}));
    EXPECT_NE(counter, (StatCounter{1, 2, 0, 4, 5, 6}));
    EXPECT_NE(counter, (StatCounter{1, 2, 3, 0, 5, 6}));
    EXPECT_NE(counter, (StatCounter{1, 2, 3, 4, 0, 6}));
    EXPECT_NE(counter, (StatCounter{1, 2, 3, 4, 5, 0}));
}

constexpr auto full = std::numeric_limits<std::int64_t>::max();

TEST(StatCounterDeathTest, StopsTheProgramRatherThanCountPastTheHighestNumber) {
    EXPECT_DEATH((StatCounter{.sent = full}.addPingSent()), "");
    EXPECT_DEATH((StatCounter{.replied = full}.addPingResponse(1)), "");
    EXPECT_DEATH((StatCounter{.lost = full}.addPingTimeout()), "");
}

} // namespace
} // namespace tarnwick
