// Days and hours as the user's clock has them.
#include "core/History/LocalTime.h"

#include "tests/core/History/SomeHistory.h"
#include "tests/support/Variable.h"

#include <ctime>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using namespace std::chrono_literals;

constexpr std::chrono::year_month_day springChange{2026y / 3 / 29};
constexpr std::chrono::year_month_day autumnChange{2026y / 10 / 25};

TEST(LocalTime, ADayBeginsAtLocalMidnight) {
    EXPECT_EQ(spanOfDay(2026y / 1 / 15, centralEurope), between("2026-01-14 23:00", "2026-01-15 23:00"));
    EXPECT_EQ(spanOfDay(2026y / 7 / 15, centralEurope), between("2026-07-14 22:00", "2026-07-15 22:00"));
}

TEST(LocalTime, TheDayOfTheSpringChangeHas23Hours) {
    EXPECT_EQ(spanOfDay(springChange, centralEurope), between("2026-03-28 23:00", "2026-03-29 22:00"));
}

TEST(LocalTime, TheDayOfTheAutumnChangeHas25Hours) {
    EXPECT_EQ(spanOfDay(autumnChange, centralEurope), between("2026-10-24 22:00", "2026-10-25 23:00"));
}

TEST(LocalTime, ADayWhoseMidnightIsSkippedBeginsAnHourLater) {
    const UtcOffset skipsMidnight = [](HistoryTime time) -> std::chrono::seconds {
        return time < at("2026-09-06 04:00") ? -4h : -3h;
    };

    EXPECT_EQ(spanOfDay(2026y / 9 / 6, skipsMidnight), between("2026-09-06 04:00", "2026-09-07 03:00"));
    EXPECT_EQ(spanOfDay(2026y / 9 / 5, skipsMidnight), between("2026-09-05 04:00", "2026-09-06 04:00"));
}

TEST(LocalTime, DaysBeginWhereTheClockIsFarthestFromUtc) {
    EXPECT_EQ(
        spanOfDay(2026y / 5 / 1, [](HistoryTime) { return 14h; }),
        between("2026-04-30 10:00", "2026-05-01 10:00"));
    EXPECT_EQ(
        spanOfDay(2026y / 5 / 1, [](HistoryTime) { return -12h; }),
        between("2026-05-01 12:00", "2026-05-02 12:00"));
}

TEST(LocalTime, AMomentBelongsToItsLocalDay) {
    EXPECT_EQ(
        localDay(at("2026-03-28 22:59:59"), centralEurope), std::chrono::year_month_day(2026y / 3 / 28));
    EXPECT_EQ(localDay(at("2026-03-28 23:00:00"), centralEurope), springChange);
}

TEST(LocalTime, TheHourBeforeTheClockIsSetBackAndTheOneAfterAreShownTwice) {
    EXPECT_FALSE(isShownTwice(at("2026-10-24 23:59:59"), centralEurope));
    EXPECT_TRUE(isShownTwice(at("2026-10-25 00:00"), centralEurope));
    EXPECT_TRUE(isShownTwice(at("2026-10-25 00:59:59"), centralEurope));
    EXPECT_TRUE(isShownTwice(at("2026-10-25 01:00"), centralEurope));
    EXPECT_TRUE(isShownTwice(at("2026-10-25 01:59:59"), centralEurope));
    EXPECT_FALSE(isShownTwice(at("2026-10-25 02:00"), centralEurope));
    EXPECT_FALSE(isShownTwice(at("2026-03-29 00:59:59"), centralEurope));
    EXPECT_FALSE(isShownTwice(at("2026-03-29 01:00"), centralEurope));
}

TEST(LocalTime, AnHourBeginsWhenTheClockIsFull) {
    EXPECT_EQ(startOfHour(at("2026-03-29 01:20"), centralEurope), at("2026-03-29 01:00"));
    EXPECT_EQ(
        startOfHour(at("2026-03-29 01:20"), [](HistoryTime) { return 5h + 45min; }), at("2026-03-29 01:15"));
}

TEST(LocalTime, TheSystemsZoneIsFollowed) {
    const test::Variable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    ::tzset();

    EXPECT_EQ(spanOfDay(springChange, systemUtcOffset), between("2026-03-28 23:00", "2026-03-29 22:00"));
    EXPECT_EQ(spanOfDay(autumnChange, systemUtcOffset), between("2026-10-24 22:00", "2026-10-25 23:00"));
}

} // namespace
} // namespace tarnwick
