// Which hours were worst.
#include "core/History/WorstHours.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using test::goodPeriods;
using test::outage;

const Span wholeDay = between("2026-01-01 00:00", "2026-01-02 00:00");

Period& minuteOf(History& history, const std::string& time) {
    return *std::ranges::find(history.periods, at(time), &Period::start);
}

History dayOfMinutes() {
    History history{.until = wholeDay.to};
    history.periods = goodPeriods(wholeDay);
    return history;
}

std::vector<HistoryTime> startsOf(const std::vector<HourSummary>& hours) {
    std::vector<HistoryTime> starts;
    for (const HourSummary& hour : hours) {
        starts.push_back(hour.span.from);
    }
    return starts;
}

TEST(WorstHours, OfAGoodDayAreNone) {
    EXPECT_TRUE(worstHours(dayOfMinutes(), wholeDay, 5, centralEurope).empty());
}

TEST(WorstHours, AreOrderedByOutageThenLossThenLatency) {
    History history = dayOfMinutes();
    minuteOf(history, "2026-01-01 03:10").figures.lost = 1;
    minuteOf(history, "2026-01-01 05:10").figures.lost = 1;
    for (int answer = 0; answer < 100; ++answer) {
        minuteOf(history, "2026-01-01 05:10").figures.latencies.add(900);
        minuteOf(history, "2026-01-01 05:10").figures.slowestMs = 900;
    }
    minuteOf(history, "2026-01-01 07:10").figures.lost = 9;
    history.episodes = {
        outage("2026-01-01 09:00", "2026-01-01 09:01"), outage("2026-01-01 11:00", "2026-01-01 11:02")};

    EXPECT_EQ(
        startsOf(worstHours(history, wholeDay, 9, centralEurope)),
        (std::vector{
            at("2026-01-01 11:00"), at("2026-01-01 09:00"), at("2026-01-01 07:00"), at("2026-01-01 05:00"),
            at("2026-01-01 03:00")}));
    EXPECT_EQ(worstHours(history, wholeDay, 2, centralEurope).size(), 2U);
}

TEST(WorstHours, AreThoseOfTheLocalClock) {
    History history = dayOfMinutes();
    history.episodes = {outage("2026-01-01 10:00", "2026-01-01 11:00")};
    const UtcOffset halfPast = [](HistoryTime) { return std::chrono::minutes(330); };

    EXPECT_EQ(
        startsOf(worstHours(history, wholeDay, 9, halfPast)),
        (std::vector{at("2026-01-01 10:30"), at("2026-01-01 09:30")}));
}

TEST(WorstHours, EndWithTheSpan) {
    History history = dayOfMinutes();
    history.episodes = {outage("2026-01-01 10:00", "2026-01-01 11:00")};

    const auto hours = worstHours(history, between("2026-01-01 10:20", "2026-01-01 10:50"), 9, centralEurope);

    ASSERT_EQ(hours.size(), 1U);
    EXPECT_EQ(hours[0].span, between("2026-01-01 10:20", "2026-01-01 10:50"));
    EXPECT_EQ(hours[0].availability.down, 30 * 60);
}

} // namespace
} // namespace tarnwick
