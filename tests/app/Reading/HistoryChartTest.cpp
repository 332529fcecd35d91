// The chart of a longer span as data: its parts, its columns, its texts.
#include "app/Reading/HistoryChart.h"

#include "tests/core/History/SomeHistory.h"
#include "tests/support/CaseName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick::HistoryChart {
namespace {

using LatencyChart::BarTone;
using test::at;
using test::between;
using test::centralEurope;
using test::goodPeriod;
using test::goodPeriods;
using test::outage;
using namespace std::chrono_literals;

constexpr Thresholds thresholds{.lowMs = 100, .highMs = 400};

std::chrono::seconds utc(HistoryTime /*time*/) {
    return 0s;
}

struct DivisionCase {
    const char* name;
    Reach reach;
    const char* now;
    int most;
    Division division;
};

class HistoryChartDivision : public testing::TestWithParam<DivisionCase> {};

TEST_P(HistoryChartDivision, HasFullMinutesAndHoursOfTheLocalClock) {
    const DivisionCase& tested = GetParam();

    const Division division =
        HistoryChart::divisionOf(tested.reach, at(tested.now), tested.most, centralEurope);

    EXPECT_EQ(division, tested.division);
}

INSTANTIATE_TEST_SUITE_P(
    HistoryChart, HistoryChartDivision,
    testing::Values(
        DivisionCase{
            "HourByMinutes",
            Reach::hour,
            "2026-11-24 13:20:30",
            73,
            {between("2026-11-24 12:21", "2026-11-24 13:21"), 60}},
        DivisionCase{
            "AtAFullMinuteTheNextOneHasBegun",
            Reach::hour,
            "2026-11-24 13:20",
            60,
            {between("2026-11-24 12:21", "2026-11-24 13:21"), 60}},
        DivisionCase{
            "HourWithLittleRoom",
            Reach::hour,
            "2026-11-24 13:20:30",
            59,
            {between("2026-11-24 12:22", "2026-11-24 13:22"), 30}},
        DivisionCase{
            "DayByTwentyMinutes",
            Reach::day,
            "2026-11-24 13:25",
            73,
            {between("2026-11-23 13:40", "2026-11-24 13:40"), 72}},
        DivisionCase{
            "DayWithMuchRoom",
            Reach::day,
            "2026-11-24 13:25",
            200,
            {between("2026-11-23 13:30", "2026-11-24 13:30"), 96}},
        DivisionCase{
            "DayWithTooLittleRoomHasTheFewestParts",
            Reach::day,
            "2026-11-24 13:25",
            5,
            {between("2026-11-23 15:00", "2026-11-24 15:00"), 12}},
        DivisionCase{
            "WeekByThreeHoursOfTheLocalClock",
            Reach::week,
            "2026-11-24 13:25",
            73,
            {between("2026-11-17 14:00", "2026-11-24 14:00"), 56}},
        DivisionCase{
            "WeekInSummer",
            Reach::week,
            "2026-07-14 13:25",
            73,
            {between("2026-07-07 16:00", "2026-07-14 16:00"), 56}}),
    test::caseName);

struct ColumnCase {
    const char* name;
    History history;
    const char* text;
    BarTone tone;
    bool isGap = false;
};

class HistoryChartColumn : public testing::TestWithParam<ColumnCase> {};

TEST_P(HistoryChartColumn, TellsWhatHasBeen) {
    const Chart chart = chartOf(
        GetParam().history, {.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 1}, thresholds,
        centralEurope);

    ASSERT_EQ(chart.columns.size(), 1U);
    EXPECT_EQ(chart.columns.front().text(), GetParam().text);
    EXPECT_EQ(chart.columns.front().tone, GetParam().tone);
    EXPECT_EQ(chart.columns.front().isGap(), GetParam().isGap);
}

/// Twenty minutes, each with a ping each five seconds.
History answered(double ms, std::int64_t lost = 0) {
    History history{.until = at("2026-11-24 13:20")};
    for (HistoryTime start = at("2026-11-24 13:00"); start < history.until; start += 1min) {
        history.periods.push_back(goodPeriod(start, PeriodLength::minute, ms));
    }
    history.periods.front().figures.lost = lost;
    return history;
}

History with(History history, const std::vector<Episode>& episodes, const std::vector<Gap>& gaps) {
    history.episodes = episodes;
    history.gaps = gaps;
    return history;
}

Gap gap(Gap::Kind kind, const char* from, const char* to) {
    return {.kind = kind, .span = between(from, to)};
}

/// Of the test's twenty minutes, without an answer.
History silent() {
    return {.until = at("2026-11-24 13:20")};
}

INSTANTIATE_TEST_SUITE_P(
    HistoryChart, HistoryChartColumn,
    testing::Values(
        ColumnCase{"Good", answered(84), "Tue 14:00 to 14:20: slowest 84 ms, no loss", BarTone::good},
        ColumnCase{"Slow", answered(101), "Tue 14:00 to 14:20: slowest 101 ms, no loss", BarTone::warn},
        ColumnCase{"Useless", answered(300), "Tue 14:00 to 14:20: slowest 300 ms, no loss", BarTone::bad},
        ColumnCase{
            "LossChangesNoColor", answered(84, 5), "Tue 14:00 to 14:20: slowest 84 ms, 2% lost",
            BarTone::good},
        ColumnCase{
            "LittleLossIsNotNone", answered(84, 1), "Tue 14:00 to 14:20: slowest 84 ms, under 1% lost",
            BarTone::good},
        ColumnCase{
            "NearlyAllLostIsNotAll", answered(84, 100'000), "Tue 14:00 to 14:20: slowest 84 ms, 99% lost",
            BarTone::good},
        ColumnCase{
            "AllLost",
            {.periods = {{.start = at("2026-11-24 13:00"), .figures = {.sent = 12, .lost = 12}}},
             .until = at("2026-11-24 13:20")},
            "Tue 14:00 to 14:20: 100% lost",
            BarTone::outage},
        ColumnCase{
            "DownForAPart", with(answered(84), {outage("2026-11-24 13:02", "2026-11-24 13:05:10")}, {}),
            "Tue 14:00 to 14:20: down for 3 min, slowest 84 ms, no loss", BarTone::outage},
        ColumnCase{
            "DownForSeconds", with(answered(84), {outage("2026-11-24 13:02", "2026-11-24 13:02:42")}, {}),
            "Tue 14:00 to 14:20: down for 42 s, slowest 84 ms, no loss", BarTone::outage},
        ColumnCase{
            "Down", with(silent(), {outage("2026-11-24 12:50", "2026-11-24 13:40")}, {}),
            "Tue 14:00 to 14:20: down", BarTone::outage},
        ColumnCase{
            "Asleep", with(silent(), {}, {gap(Gap::Kind::asleep, "2026-11-24 12:50", "2026-11-24 13:40")}),
            "Tue 14:00 to 14:20: computer asleep", BarTone::none, true},
        ColumnCase{
            "AsleepForLess",
            with(answered(84), {}, {gap(Gap::Kind::asleep, "2026-11-24 13:18", "2026-11-24 13:40")}),
            "Tue 14:00 to 14:20: slowest 84 ms, no loss, computer asleep for 2 min", BarTone::good, false},
        ColumnCase{
            "NotRunningForMost",
            with(answered(84), {}, {gap(Gap::Kind::notRunning, "2026-11-24 12:00", "2026-11-24 13:10")}),
            "Tue 14:00 to 14:20: slowest 84 ms, no loss, Tarnwick not running for 10 min", BarTone::good,
            true},
        ColumnCase{
            "PausedThenUnknown",
            with(silent(), {}, {gap(Gap::Kind::paused, "2026-11-24 12:50", "2026-11-24 13:01")}),
            "Tue 14:00 to 14:20: paused for 1 min", BarTone::none, true},
        ColumnCase{"Unknown", silent(), "Tue 14:00 to 14:20: no data", BarTone::none},
        ColumnCase{
            "BeyondTheHistory",
            {.until = at("2026-11-24 13:00")},
            "Tue 14:00 to 14:20: no data",
            BarTone::none},
        // Down until now: the rest of the part is not over.
        ColumnCase{
            "DownUntilNow",
            {.episodes = {{.start = at("2026-11-24 12:55")}}, .until = at("2026-11-24 13:07")},
            "Tue 14:00 to 14:20: down",
            BarTone::outage}),
    test::caseName);

struct SpanText {
    const char* name;
    Span span;
    const char* time;
};

class HistoryChartTime : public testing::TestWithParam<SpanText> {};

TEST_P(HistoryChartTime, IsOfTheLocalClock) {
    const Chart chart = chartOf({}, {.span = GetParam().span, .parts = 1}, thresholds, centralEurope);

    EXPECT_EQ(chart.columns.at(0).time, GetParam().time);
}

INSTANTIATE_TEST_SUITE_P(
    HistoryChart, HistoryChartTime,
    testing::Values(
        SpanText{"Minutes", between("2026-11-24 13:05", "2026-11-24 13:06"), "Tue 14:05 to 14:06"},
        SpanText{"ToMidnight", between("2026-11-24 20:00", "2026-11-24 23:00"), "Tue 21:00 to 24:00"},
        SpanText{"FromMidnight", between("2026-11-24 23:00", "2026-11-25 02:00"), "Wed 00:00 to 03:00"},
        SpanText{"OverMidnight", between("2026-11-24 20:00", "2026-11-25 02:00"), "Tue 21:00 to Wed 03:00"},
        SpanText{"Sunday", between("2026-11-22 08:00", "2026-11-22 09:00"), "Sun 09:00 to 10:00"},
        SpanText{"Saturday", between("2026-07-11 08:00", "2026-07-11 09:00"), "Sat 10:00 to 11:00"},
        SpanText{"ClockChange", between("2026-03-29 00:00", "2026-03-29 03:00"), "Sun 01:00 to 05:00"}),
    test::caseName);

struct LabelCase {
    const char* name;
    Span span;
    std::vector<TimeLabel> labels;
};

class HistoryChartLabels : public testing::TestWithParam<LabelCase> {};

TEST_P(HistoryChartLabels, AreFewAndRound) {
    const Chart chart = chartOf({}, {.span = GetParam().span, .parts = 12}, thresholds, centralEurope);

    ASSERT_EQ(chart.timeLabels.size(), GetParam().labels.size());
    for (std::size_t index = 0; index < chart.timeLabels.size(); ++index) {
        EXPECT_EQ(chart.timeLabels[index].text, GetParam().labels[index].text);
        EXPECT_NEAR(chart.timeLabels[index].position, GetParam().labels[index].position, 0.0001);
    }
}

INSTANTIATE_TEST_SUITE_P(
    HistoryChart, HistoryChartLabels,
    testing::Values(
        LabelCase{
            "Hour",
            between("2026-11-24 12:21", "2026-11-24 13:21"),
            {{9 / 60.0, "13:30"},
             {19 / 60.0, "13:40"},
             {29 / 60.0, "13:50"},
             {39 / 60.0, "14:00"},
             {49 / 60.0, "14:10"},
             {59 / 60.0, "14:20"}}},
        LabelCase{
            "Day",
            between("2026-11-23 13:40", "2026-11-24 13:40"),
            {{80 / 1440.0, "16:00"},
             {320 / 1440.0, "20:00"},
             {560 / 1440.0, "00:00"},
             {800 / 1440.0, "04:00"},
             {1040 / 1440.0, "08:00"},
             {1280 / 1440.0, "12:00"}}},
        LabelCase{
            "Week",
            between("2026-11-17 14:00", "2026-11-24 14:00"),
            {{9 / 168.0, "Wed"},
             {33 / 168.0, "Thu"},
             {57 / 168.0, "Fri"},
             {81 / 168.0, "Sat"},
             {105 / 168.0, "Sun"},
             {129 / 168.0, "Mon"},
             {153 / 168.0, "Tue"}}},
        // From midnight to midnight, 23 hours apart: one that begins the span is on it, its end is not.
        LabelCase{
            "DayOfTheSpringChange",
            between("2026-03-28 23:00", "2026-03-29 22:00"),
            {{0, "00:00"},
             {3 / 23.0, "04:00"},
             {7 / 23.0, "08:00"},
             {11 / 23.0, "12:00"},
             {15 / 23.0, "16:00"},
             {19 / 23.0, "20:00"}}},
        LabelCase{"Nothing", between("2026-03-28 23:00", "2026-03-28 23:00"), {}}),
    test::caseName);

TEST(HistoryChart, HasAColumnForEachPartWithTheFiguresOfItsTime) {
    History history = answered(84, 24);
    history.gaps = {gap(Gap::Kind::asleep, "2026-11-24 13:10", "2026-11-24 13:15")};

    const Chart chart = chartOf(
        history, {.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 2}, thresholds, utc);

    ASSERT_EQ(chart.columns.size(), 2U);
    EXPECT_EQ(chart.columns[0].span, between("2026-11-24 13:00", "2026-11-24 13:10"));
    EXPECT_EQ(chart.columns[0].slowestMs, 84);
    EXPECT_NEAR(chart.columns[0].lossShare, 24 / 144.0, 0.001);
    EXPECT_EQ(chart.columns[0].gapShare, 0);
    EXPECT_EQ(chart.columns[1].span, between("2026-11-24 13:10", "2026-11-24 13:20"));
    EXPECT_EQ(chart.columns[1].lossShare, 0);
    EXPECT_EQ(chart.columns[1].gapShare, 0.5);
}

TEST(HistoryChart, HasTheScaleOfTheFiveMinutes) {
    const Division division{.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 20};

    const Chart slow = chartOf(answered(300), division, thresholds, utc);
    const Chart empty = chartOf({}, division, thresholds, utc);

    EXPECT_EQ(slow.scaleMax(), LatencyChart::scaleMax(std::vector<double>(20, 300), 100));
    EXPECT_EQ(empty.scaleMax(), LatencyChart::scaleMax({}, 100));
    EXPECT_EQ(slow.thresholdText(), "slow above 100 ms");
}

TEST(HistoryChart, IsEmptyOnlyWhereNothingIsKnown) {
    const Division division{.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 20};
    const History slept =
        with(silent(), {}, {gap(Gap::Kind::asleep, "2026-11-24 13:03", "2026-11-24 13:04")});

    EXPECT_TRUE(chartOf(silent(), division, thresholds, utc).isEmpty());
    EXPECT_FALSE(chartOf(slept, division, thresholds, utc).isEmpty());
    EXPECT_FALSE(chartOf(answered(20), division, thresholds, utc).isEmpty());
}

TEST(HistoryChart, IsReadAloudWithTheFiguresOfItsSpan) {
    History history = answered(84, 5);
    history.episodes = {outage("2026-11-24 13:02", "2026-11-24 13:05")};

    Chart chart = chartOf(
        history, {.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 4}, thresholds, utc);
    chart.title = "Last hour";
    chart.whyEmpty = "not shown";

    EXPECT_EQ(
        chart.summary(),
        "Last hour, median 84 milliseconds, slowest 84 milliseconds, 2% lost, down for 3 min");
}

TEST(HistoryChart, IsReadAloudWithTheReasonWhenItIsEmpty) {
    Chart chart =
        chartOf({}, {.span = between("2026-11-24 13:00", "2026-11-24 13:20"), .parts = 4}, thresholds, utc);
    chart.title = "Last hour";
    chart.whyEmpty = "no history is kept";

    EXPECT_EQ(chart.summary(), "Last hour, no history is kept");
}

TEST(HistoryChart, HasNamesAndTitlesForTheSwitch) {
    std::vector<std::string> names;
    std::vector<std::string> titles;
    for (const Reach reach : HistoryChart::allReaches) {
        names.push_back(HistoryChart::nameOf(reach));
        titles.push_back(HistoryChart::titleOf(reach));
    }

    EXPECT_THAT(names, testing::ElementsAre("5 min", "1 hour", "1 day", "1 week"));
    EXPECT_THAT(titles, testing::ElementsAre("Last 5 minutes", "Last hour", "Last 24 hours", "Last 7 days"));
}

} // namespace
} // namespace tarnwick::HistoryChart
