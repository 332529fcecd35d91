// What becomes of periods as they grow old.
#include "core/History/RollUp.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using RollUp::Key;
using RollUp::Plan;
using test::at;
using enum PeriodLength;

const HistoryTime now = at("2026-06-30 12:00");

/// On the days on which periods grow too old: 7, 90 and 730 days before.
TEST(RollUp, YoungPeriodsStay) {
    const std::vector<Key> young{
        {.start = at("2026-06-30 11:59"), .length = minute},
        {.start = at("2026-06-23 12:00"), .length = minute},
        {.start = at("2026-04-01 12:00"), .length = quarterHour},
        {.start = at("2024-06-30 12:00"), .length = hour}};

    EXPECT_EQ(RollUp::planFor(young, now), Plan{});
}

TEST(RollUp, MinutesOlderThanAWeekBecomeAQuarterHour) {
    const Key first{.start = at("2026-06-23 11:45"), .length = minute};
    const Key last{.start = at("2026-06-23 11:59"), .length = minute};

    EXPECT_EQ(
        RollUp::planFor({first, last}, now),
        (Plan{.merges = {{{.start = at("2026-06-23 11:45"), .length = quarterHour}, {first, last}}}}));
}

TEST(RollUp, AQuarterHourIsNotMadeBeforeItIsWhole) {
    const Key old{.start = at("2026-06-23 11:45"), .length = minute};

    EXPECT_EQ(RollUp::planFor({old}, now - std::chrono::seconds(1)), Plan{});
}

TEST(RollUp, QuarterHoursOlderThanNinetyDaysBecomeAnHour) {
    const Key third{.start = at("2026-04-01 11:30"), .length = quarterHour};

    EXPECT_EQ(
        RollUp::planFor({third}, now),
        (Plan{.merges = {{{.start = at("2026-04-01 11:00"), .length = hour}, {third}}}}));
    EXPECT_EQ(RollUp::planFor({third}, now - std::chrono::seconds(1)), Plan{});
}

TEST(RollUp, OldMinutesBecomeAnHourAtOnce) {
    const Key old{.start = at("2026-01-05 10:20"), .length = minute};

    EXPECT_EQ(
        RollUp::planFor({old}, now),
        (Plan{.merges = {{{.start = at("2026-01-05 10:00"), .length = hour}, {old}}}}));
}

TEST(RollUp, WhatIsOlderThanTwoYearsGoes) {
    const std::vector<Key> old{
        {.start = at("2024-06-30 11:00"), .length = hour},
        {.start = at("2024-06-30 11:59"), .length = minute}};

    EXPECT_EQ(RollUp::planFor(old, now), Plan{.removals = old});
}

TEST(RollUp, PeriodsOfTheFutureStay) {
    EXPECT_EQ(RollUp::planFor({{.start = at("2027-06-30 11:00"), .length = minute}}, now), Plan{});
}

TEST(RollUp, NothingIsDueThatStartedLater) {
    for (const PeriodLength length : allPeriodLengths) {
        const HistoryTime youngest = floorTo(RollUp::youngestDue(length, now), secondsIn(length));
        const Key period{.start = youngest, .length = length};
        EXPECT_EQ(RollUp::placeOf(period, now), period);
        const Key before{.start = youngest - secondsIn(length), .length = length};
        EXPECT_NE(RollUp::placeOf(before, now), before);
    }
}

} // namespace
} // namespace tarnwick
