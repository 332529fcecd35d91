// A history by days of the calendar.
#include "core/History/Days.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using test::goodPeriods;
using test::outage;
using namespace std::chrono_literals;

History watchedIn(const Span& span, PeriodLength length = PeriodLength::quarterHour) {
    History history{.until = span.to};
    history.periods = goodPeriods(span, length);
    return history;
}

std::vector<DaySummary::Worst> worstOf(const std::vector<DaySummary>& days) {
    std::vector<DaySummary::Worst> worst;
    for (const DaySummary& day : days) {
        worst.push_back(day.worst);
    }
    return worst;
}

TEST(Days, TellTheWorstOfEach) {
    History history = watchedIn(between("2026-01-02 23:00", "2026-01-05 23:00"));
    history.episodes = {
        outage("2026-01-04 10:00", "2026-01-04 10:05"), outage("2026-01-04 12:00", "2026-01-04 12:05"),
        outage("2026-01-05 10:00", "2026-01-05 10:05")};
    history.episodes[1].kind = Episode::Kind::degradation;
    history.episodes[2].kind = Episode::Kind::degradation;

    const auto days = daySummaries(history, 2026y / 1 / 2, 2026y / 1 / 5, centralEurope);

    using enum DaySummary::Worst;
    EXPECT_EQ(worstOf(days), (std::vector{notWatched, good, down, degraded}));
    EXPECT_EQ(days[2].outages, 1);
    EXPECT_EQ(days[3].outages, 0);
}

TEST(Days, AnOutageOverMidnightCountsOnBothWithItsPart) {
    History history = watchedIn(between("2026-01-01 23:00", "2026-01-03 23:00"));
    history.episodes = {outage("2026-01-02 22:00", "2026-01-03 01:00")};

    const auto days = daySummaries(history, 2026y / 1 / 2, 2026y / 1 / 3, centralEurope);

    EXPECT_EQ(days[0].outages, 1);
    EXPECT_EQ(days[0].availability.down, 3600);
    EXPECT_EQ(days[1].outages, 1);
    EXPECT_EQ(days[1].availability.down, 2 * 3600);
}

TEST(Days, AnOutageOfAllOfTheDayLeavesNothing) {
    History history = watchedIn(between("2026-01-01 23:00", "2026-01-02 23:00"));
    history.episodes = {{.start = at("2026-01-01 12:00")}};

    EXPECT_EQ(
        daySummaries(history, 2026y / 1 / 2, 2026y / 1 / 2, centralEurope)[0].availability.percent(), 0);
}

TEST(Days, OfAClockChangeAreAsLongAsTheyWere) {
    const History spring = watchedIn(between("2026-03-28 23:00", "2026-03-29 22:00"));
    const History autumn = watchedIn(between("2026-10-24 22:00", "2026-10-25 23:00"));

    const DaySummary shortDay = daySummaries(spring, 2026y / 3 / 29, 2026y / 3 / 29, centralEurope)[0];
    const DaySummary longDay = daySummaries(autumn, 2026y / 10 / 25, 2026y / 10 / 25, centralEurope)[0];

    EXPECT_EQ(shortDay.availability, Availability{.watched = 23 * 3600});
    EXPECT_EQ(shortDay.figures.sent, 23 * 720);
    EXPECT_EQ(longDay.availability, Availability{.watched = 25 * 3600});
    EXPECT_EQ(longDay.figures.sent, 25 * 720);
}

TEST(Days, AnOutageOfTheRepeatedHourHasItsRealLength) {
    History history = watchedIn(between("2026-10-24 22:00", "2026-10-25 23:00"));
    // The clock shows 02:30 at the start, and 02:40 at the end.
    history.episodes = {outage("2026-10-25 00:30", "2026-10-25 01:40")};

    EXPECT_EQ(
        daySummaries(history, 2026y / 10 / 25, 2026y / 10 / 25, centralEurope)[0].availability.down, 70 * 60);
}

TEST(Days, TodayEndsWhereTheHistoryDoes) {
    const History history = watchedIn(between("2026-01-01 23:00", "2026-01-02 11:00"));

    const auto days = daySummaries(history, 2026y / 1 / 2, 2026y / 1 / 3, centralEurope);

    EXPECT_EQ(days[0].availability, Availability{.watched = 12 * 3600});
    EXPECT_EQ(days[1].worst, DaySummary::Worst::notWatched);
    EXPECT_EQ(days[1].availability, Availability{});
}

} // namespace
} // namespace tarnwick
