// What a history says about a time.
#include "app/Report/Report.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using test::outage;
using namespace std::chrono_literals;

const Span oneDay = between("2026-01-05 00:00", "2026-01-06 00:00");

History aDay() {
    History history{.until = oneDay.to};
    history.periods = test::goodPeriods(oneDay, PeriodLength::quarterHour);
    return history;
}

TEST(Report, CoversWhatTheHistoryKnows) {
    const Report report =
        makeReport(aDay(), "one.example", between("2025-12-01 00:00", "2026-02-01 00:00"), centralEurope);

    EXPECT_EQ(report.host, "one.example");
    EXPECT_EQ(report.span, oneDay);
    EXPECT_EQ(report.availability, Availability{.watched = 86'400});
    EXPECT_EQ(report.figures.sent, 17'280);
    ASSERT_EQ(report.days.size(), 2U); // of the local calendar
    EXPECT_EQ(report.days[0].day, std::chrono::year_month_day(2026y / 1 / 5));
    EXPECT_EQ(report.days[1].day, std::chrono::year_month_day(2026y / 1 / 6));
}

TEST(Report, CoversNoMoreThanIsWanted) {
    const Span wanted = between("2026-01-05 06:00", "2026-01-05 07:00");

    EXPECT_EQ(makeReport(aDay(), "one.example", wanted, centralEurope).span, wanted);
}

TEST(Report, BeginsWithAnOutageBeforeTheFirstMinute) {
    History history = aDay();
    history.episodes = {outage("2026-01-04 23:59", "2026-01-05 00:01")};

    const Span wanted = between("2026-01-01 00:00", "2026-02-01 00:00");
    EXPECT_EQ(makeReport(history, "one.example", wanted, centralEurope).span.from, at("2026-01-04 23:59"));
}

TEST(Report, OfATimeThatNothingIsKnownOfIsEmpty) {
    const Report before =
        makeReport(aDay(), "one.example", between("2025-01-05 06:00", "2025-01-05 07:00"), centralEurope);

    EXPECT_TRUE(before.span.isEmpty());
    EXPECT_EQ(before.availability, Availability{});
    EXPECT_TRUE(makeReport({}, "one.example", oneDay, centralEurope).span.isEmpty());
}

TEST(Report, ListsOutagesThatReachIntoTheTime) {
    History history = aDay();
    history.episodes = {
        outage("2026-01-05 01:00", "2026-01-05 02:00"),
        outage("2026-01-05 05:50", "2026-01-05 06:10"),
        outage("2026-01-05 06:30", "2026-01-05 06:31"),
        {.start = at("2026-01-05 06:50")}};
    history.episodes[2].kind = Episode::Kind::degradation;
    history.gaps = {{.kind = Gap::Kind::asleep, .span = between("2026-01-05 05:55", "2026-01-05 06:05")}};

    const Report report =
        makeReport(history, "one.example", between("2026-01-05 06:00", "2026-01-05 07:00"), centralEurope);

    ASSERT_EQ(report.outages.size(), 2U);
    EXPECT_EQ(report.outages[0].episode, history.episodes[1]);
    EXPECT_EQ(report.outages[0].length, 10min);
    EXPECT_FALSE(report.outages[0].lasts);
    EXPECT_EQ(report.outages[1].episode, history.episodes[3]);
    EXPECT_TRUE(report.outages[1].lasts);
}

TEST(Report, NamesTheFiveWorstHours) {
    History history = aDay();
    for (const int hour : {1, 3, 5, 7, 9, 11}) {
        const HistoryTime start = oneDay.from + std::chrono::hours(hour);
        history.episodes.push_back({.start = start, .end = start + std::chrono::minutes(hour)});
    }

    const Report report = makeReport(history, "one.example", oneDay, centralEurope);

    ASSERT_EQ(report.worstHours.size(), 5U);
    EXPECT_EQ(report.worstHours[0].span.from, at("2026-01-05 11:00"));
    EXPECT_EQ(report.worstHours[4].span.from, at("2026-01-05 03:00"));
}

TEST(Report, KnowsItsLongestOutage) {
    History history = aDay();
    EXPECT_EQ(longestOutage(makeReport(history, "one.example", oneDay, centralEurope)), 0s);

    history.episodes = {
        outage("2026-01-05 01:00", "2026-01-05 01:02"), outage("2026-01-05 05:00", "2026-01-05 05:10"),
        outage("2026-01-05 06:00", "2026-01-05 06:01")};

    EXPECT_EQ(longestOutage(makeReport(history, "one.example", oneDay, centralEurope)), 10min);
}

TEST(Report, HasAChartWithBucketsOfARoundLength) {
    History history = aDay();
    const auto bucketsOf = [&](const std::string& from, const std::string& to) {
        const Span wanted = between(from, to);
        history.periods = {test::goodPeriod(wanted.from, PeriodLength::hour)};
        history.until = wanted.to;
        return makeReport(history, "one.example", wanted, centralEurope).chart.buckets.size();
    };

    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-05 00:01"), 1U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-05 03:00"), 180U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-05 03:00:01"), 91U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-06 00:00"), 144U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-12 00:00"), 168U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-05 06:01"), 73U);  // of 5 minutes
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-06 07:00"), 124U); // of 15 minutes
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-07 00:00"), 96U);  // of 30 minutes
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-13 00:00"), 96U);  // of 2 hours
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-21 00:00"), 128U); // of 3 hours
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-01-29 00:00"), 96U);  // of 6 hours
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-04-05 00:00"), 180U);
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-04-06 00:00"), 91U);  // of a day
    EXPECT_EQ(bucketsOf("2026-01-05 00:00", "2026-10-02 00:00"), 135U); // of 2 days
    EXPECT_EQ(bucketsOf("2024-01-05 00:00", "2026-01-05 00:00"), 147U);
}

TEST(Report, HasAChartThatTellsWhatWasNotWatchedFromOutages) {
    History history = aDay();
    std::erase_if(history.periods, [](const Period& period) {
        return between("2026-01-05 12:00", "2026-01-05 18:00").overlaps(period.span());
    });
    history.gaps = {{.kind = Gap::Kind::asleep, .span = between("2026-01-05 02:05", "2026-01-05 02:08")}};
    history.episodes = {
        outage("2026-01-05 02:00", "2026-01-05 02:10"), outage("2026-01-05 15:00", "2026-01-05 15:10")};

    const ReportChart chart = makeReport(history, "one.example", oneDay, centralEurope).chart;

    EXPECT_EQ(
        chart.unwatched,
        (std::vector{
            between("2026-01-05 02:05", "2026-01-05 02:08"), between("2026-01-05 12:00", "2026-01-05 15:00"),
            between("2026-01-05 15:10", "2026-01-05 18:00")}));
    EXPECT_EQ(
        chart.outages,
        (std::vector{
            between("2026-01-05 02:00", "2026-01-05 02:05"), between("2026-01-05 02:08", "2026-01-05 02:10"),
            between("2026-01-05 15:00", "2026-01-05 15:10")}));
}

TEST(Report, DaysOfTheClocksChangeHave23And25Hours) {
    const Span spring = between("2026-03-28 23:00", "2026-03-29 22:00");
    const Span autumn = between("2026-10-24 22:00", "2026-10-25 23:00");
    for (const Span& day : {spring, autumn}) {
        History history{.until = day.to};
        history.periods = test::goodPeriods(day, PeriodLength::quarterHour);

        const Report report = makeReport(history, "one.example", day, centralEurope);

        ASSERT_EQ(report.days.size(), 1U);
        EXPECT_EQ(report.days[0].span, day);
        EXPECT_EQ(report.days[0].availability.watched, std::chrono::duration<double>(day.length()).count());
    }
}

} // namespace
} // namespace tarnwick
