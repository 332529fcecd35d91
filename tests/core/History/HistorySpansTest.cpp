// Spans of time, and which parts of a history lie in them.
#include "core/History/Spans.h"

#include "core/History/History.h"
#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using namespace std::chrono_literals;

Span seconds(int from, int to) {
    return {.from = HistoryTime(std::chrono::seconds(from)), .to = HistoryTime(std::chrono::seconds(to))};
}

TEST(Spans, UnitedHoldEachMomentOnce) {
    EXPECT_EQ(
        united({seconds(20, 30), seconds(0, 10), seconds(5, 12), seconds(12, 13), seconds(40, 35)}),
        (std::vector{seconds(0, 13), seconds(20, 30)}));
}

TEST(Spans, UnitedKeepALongOneThatHoldsAShortOne) {
    EXPECT_EQ(united({seconds(0, 100), seconds(10, 20)}), std::vector{seconds(0, 100)});
}

TEST(Spans, WithoutOthersHaveHoles) {
    EXPECT_EQ(
        without({seconds(0, 100)}, {seconds(90, 110), seconds(20, 30), seconds(25, 40), seconds(-5, 5)}),
        (std::vector{seconds(5, 20), seconds(40, 90)}));
    EXPECT_EQ(without({seconds(10, 20)}, {seconds(0, 30)}), std::vector<Span>{});
    EXPECT_EQ(without({seconds(10, 20)}, {}), std::vector{seconds(10, 20)});
}

TEST(Spans, WithoutAHoleThatReachesOverSeveralHaveWhatIsLeftOfEach) {
    EXPECT_EQ(
        without({seconds(0, 10), seconds(20, 30), seconds(40, 50)}, {seconds(2, 3), seconds(5, 45)}),
        (std::vector{seconds(0, 2), seconds(3, 5), seconds(45, 50)}));
}

TEST(Spans, WithinLimitsAreCut) {
    EXPECT_EQ(
        within({seconds(0, 10), seconds(15, 40), seconds(50, 60)}, seconds(5, 20)),
        (std::vector{seconds(5, 10), seconds(15, 20)}));
}

TEST(Spans, OnlyTouchingIsNoOverlap) {
    EXPECT_FALSE(seconds(0, 10).overlaps(seconds(10, 20)));
    EXPECT_TRUE(seconds(0, 11).overlaps(seconds(10, 20)));
    EXPECT_FALSE(seconds(12, 12).overlaps(seconds(10, 20)));
}

TEST(History, PeriodsInASpanAreThoseThatOverlapIt) {
    History history;
    history.periods = test::goodPeriods(between("2026-01-01 00:00", "2026-01-01 06:00"), PeriodLength::hour);
    const auto minutes = test::goodPeriods(between("2026-01-01 06:00", "2026-01-01 07:00"));
    history.periods.insert(history.periods.end(), minutes.begin(), minutes.end());

    const auto found = periodsIn(history, between("2026-01-01 04:30", "2026-01-01 06:02"));

    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found.front().start, at("2026-01-01 04:00"));
    EXPECT_EQ(found.back().start, at("2026-01-01 06:01"));
    EXPECT_TRUE(periodsIn(history, between("2026-01-01 08:00", "2026-01-01 09:00")).empty());
    EXPECT_TRUE(periodsIn(history, between("2026-01-01 05:00", "2026-01-01 04:00")).empty());
}

TEST(History, FiguresOfAdjacentSpansCountEachPingOnce) {
    History history;
    history.periods = test::goodPeriods(between("2026-01-01 00:00", "2026-01-01 03:00"), PeriodLength::hour);

    const PeriodFigures earlier = figuresIn(history, between("2026-01-01 00:00", "2026-01-01 01:30"));
    const PeriodFigures later = figuresIn(history, between("2026-01-01 01:30", "2026-01-01 03:00"));

    EXPECT_EQ(earlier.sent, 1440);
    EXPECT_EQ(later.sent, 720);
}

TEST(History, OfThePresentPeriodAllThatWasWatchedCounts) {
    History history{.until = at("2026-01-01 00:00:20")};
    history.periods = {{.start = at("2026-01-01 00:00"), .figures = {.watchedSeconds = 20, .sent = 4}}};
    const Span known{.from = at("2026-01-01 00:00"), .to = history.until};

    EXPECT_EQ(watchedSecondsIn(history, known), 20);
    EXPECT_EQ(figuresIn(history, known).sent, 4);
    history.until = at("2025-12-31 00:00"); // the clock was set back
    EXPECT_EQ(watchedSecondsIn(history, known), 0);
}

TEST(History, WatchedTimeIsShared) {
    History history{.until = at("2026-01-02 00:00")};
    history.periods = test::goodPeriods(between("2026-01-01 00:00", "2026-01-01 03:00"), PeriodLength::hour);

    EXPECT_DOUBLE_EQ(watchedSecondsIn(history, between("2026-01-01 00:30", "2026-01-01 01:15")), 45 * 60);
}

TEST(History, AnEpisodeThatLastsGoesAsFarAsTheHistory) {
    History history{.until = at("2026-01-01 12:00")};
    const Episode open{.start = at("2026-01-01 11:40")};

    EXPECT_EQ(knownLength(open, history), 20min);
}

TEST(History, ASleepInAnOutageIsNoPartOfItsLength) {
    History history{.until = at("2026-01-02 00:00")};
    history.gaps = {{.kind = Gap::Kind::asleep, .span = between("2026-01-01 11:00", "2026-01-01 19:00")}};

    EXPECT_EQ(knownLength(test::outage("2026-01-01 10:50", "2026-01-01 19:05"), history), 15min);
}

TEST(History, GapsOfAKindLeaveOutTheOthers) {
    History history{.until = at("2026-01-02 00:00")};
    history.gaps = {
        {.kind = Gap::Kind::asleep, .span = between("2026-01-01 11:00", "2026-01-01 12:00")},
        {.kind = Gap::Kind::paused, .span = between("2026-01-01 11:30", "2026-01-01 13:00")}};
    const Span day = between("2026-01-01 00:00", "2026-01-02 00:00");

    EXPECT_EQ(
        gapsIn(history, day, Gap::Kind::asleep),
        std::vector{between("2026-01-01 11:00", "2026-01-01 12:00")});
    EXPECT_EQ(gapsIn(history, day), std::vector{between("2026-01-01 11:00", "2026-01-01 13:00")});
    EXPECT_EQ(
        gapsIn(history, between("2026-01-01 12:45", "2026-01-02 00:00")),
        std::vector{between("2026-01-01 12:45", "2026-01-01 13:00")});
}

} // namespace
} // namespace tarnwick
