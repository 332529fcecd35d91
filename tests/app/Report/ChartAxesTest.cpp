// Where the axes of a report's chart have their marks.
#include "app/Report/ChartAxes.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using namespace std::chrono_literals;

std::vector<std::string> marksOf(const std::string& from, const std::string& to) {
    std::vector<std::string> texts;
    for (const ChartAxes::TimeMark& mark : ChartAxes::timeMarks(between(from, to), centralEurope)) {
        texts.push_back(mark.text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(ChartAxes, OfAnHourOrTwoHaveMinutesOfTheLocalClock) {
    EXPECT_EQ(marksOf("2026-01-05 10:02", "2026-01-05 10:16"), (Texts{"11:05", "11:10", "11:15"}));
    EXPECT_EQ(marksOf("2026-01-05 10:02", "2026-01-05 11:03"), (Texts{"11:15", "11:30", "11:45", "12:00"}));
}

TEST(ChartAxes, OfSomeHoursHaveHoursOrHalves) {
    EXPECT_EQ(
        marksOf("2026-01-05 10:02", "2026-01-05 13:31"),
        (Texts{"11:30", "12:00", "12:30", "13:00", "13:30", "14:00", "14:30"}));
    EXPECT_EQ(
        marksOf("2026-01-05 10:02", "2026-01-05 16:31"),
        (Texts{"12:00", "13:00", "14:00", "15:00", "16:00", "17:00"}));
    EXPECT_EQ(
        marksOf("2026-01-05 23:00", "2026-01-07 05:00"),
        (Texts{"03:00", "06:00", "09:00", "12:00", "15:00", "18:00", "21:00", "00:00", "03:00"}));
}

TEST(ChartAxes, OfADayHaveEveryOtherHour) {
    EXPECT_EQ(
        marksOf("2026-01-05 23:00", "2026-01-06 23:00"),
        (Texts{
            "02:00", "04:00", "06:00", "08:00", "10:00", "12:00", "14:00", "16:00", "18:00", "20:00",
            "22:00"}));
    EXPECT_EQ(
        marksOf("2026-01-05 12:00", "2026-01-07 01:00"),
        (Texts{"18:00", "00:00", "06:00", "12:00", "18:00", "00:00"}));
}

TEST(ChartAxes, HaveTheHourTwiceThatTheClockShowsTwice) {
    EXPECT_EQ(
        marksOf("2026-10-24 22:30", "2026-10-25 03:30"),
        (Texts{"01:00", "01:30", "02:00", "02:30", "02:00", "02:30", "03:00", "03:30", "04:00"}));
}

TEST(ChartAxes, OfAWeekHaveItsMidnightsAlsoWhereTheClockIsChanged) {
    const auto marks = ChartAxes::timeMarks(between("2026-03-26 12:00", "2026-03-31 12:00"), centralEurope);

    ASSERT_EQ(marks.size(), 5U);
    EXPECT_EQ(marks[0].text, "27 Mar");
    EXPECT_EQ(marks[2].time, at("2026-03-28 23:00"));
    EXPECT_EQ(marks[3].time, at("2026-03-29 22:00"));
    EXPECT_EQ(marks[4].text, "31 Mar");
    EXPECT_EQ(marksOf("2026-01-05 23:00", "2026-01-10 23:00").front(), "6 Jan"); // where it begins
}

TEST(ChartAxes, OfMonthsHaveDaysOfEqualDistance) {
    EXPECT_EQ(
        marksOf("2026-01-05 12:00", "2026-01-25 12:00"),
        (Texts{
            "7 Jan", "9 Jan", "11 Jan", "13 Jan", "15 Jan", "17 Jan", "19 Jan", "21 Jan", "23 Jan",
            "25 Jan"}));
    EXPECT_EQ(marksOf("2026-01-05 12:00", "2026-02-20 12:00").size(), 7U);
}

TEST(ChartAxes, OfAYearHaveItsMonthsAndOfMoreItsQuarters) {
    EXPECT_EQ(marksOf("2026-10-05 12:00", "2027-01-05 12:00"), (Texts{"Nov 2026", "Dec 2026", "Jan 2027"}));
    EXPECT_EQ(marksOf("2026-09-30 22:00", "2027-01-05 12:00").front(), "Oct 2026"); // where it begins
    EXPECT_EQ(
        marksOf("2025-11-05 12:00", "2027-01-05 12:00"),
        (Texts{"Jan 2026", "Apr 2026", "Jul 2026", "Oct 2026", "Jan 2027"}));
}

TEST(ChartAxes, AreNeverCrowded) {
    for (std::int64_t length = 60; length < 3 * 365 * 86'400L; length += length / 7 + 1) {
        const HistoryTime from = at("2026-03-01 12:34:56");
        const Span span{.from = from, .to = from + std::chrono::seconds(length)};
        const auto marks = ChartAxes::timeMarks(span, centralEurope);
        EXPECT_LE(marks.size(), 13U) << length;
        for (const ChartAxes::TimeMark& mark : marks) {
            EXPECT_TRUE(span.from <= mark.time && mark.time < span.to) << length;
        }
    }
}

TEST(ChartAxes, EndAtRoundNumbers) {
    for (const auto& [value, round] : std::array<std::pair<double, double>, 9>{
             {{1, 1}, {1.1, 2}, {4, 4}, {4.5, 6}, {7, 8}, {81, 100}, {100, 100}, {0.3, 0.4}, {1201, 2000}}}) {
        EXPECT_NEAR(ChartAxes::roundUp(value), round, 1e-9) << value;
    }
}

TEST(ChartAxes, NameDaysAndMonths) {
    EXPECT_EQ(ChartAxes::dayText(2026y / 11 / 7), "7 Nov");
    EXPECT_EQ(ChartAxes::monthText(2026y / 1), "Jan 2026");
}

} // namespace
} // namespace tarnwick
