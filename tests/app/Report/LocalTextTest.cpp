// Times, lengths and shares as a report writes them.
#include "app/Report/LocalText.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::centralEurope;
using namespace std::chrono_literals;

TEST(LocalText, TimesAreThoseOfTheLocalClock) {
    EXPECT_EQ(LocalText::time(at("2026-01-05 23:05:09"), centralEurope), "2026-01-06 00:05:09");
    EXPECT_EQ(LocalText::time(at("2026-07-05 03:05:09"), centralEurope), "2026-07-05 05:05:09");
    EXPECT_EQ(LocalText::day(2026y / 3 / 9), "2026-03-09");
}

TEST(LocalText, TimesWithoutSecondsAreThoseOfTheMinute) {
    EXPECT_EQ(LocalText::minute(at("2026-01-05 23:05:59"), centralEurope), "2026-01-06 00:05");
}

TEST(LocalText, TimesOfTheRepeatedHourHaveTheirZone) {
    EXPECT_EQ(LocalText::time(at("2026-10-24 23:59:59"), centralEurope), "2026-10-25 01:59:59");
    EXPECT_EQ(LocalText::time(at("2026-10-25 00:30"), centralEurope), "2026-10-25 02:30:00 UTC+02:00");
    EXPECT_EQ(LocalText::time(at("2026-10-25 01:30"), centralEurope), "2026-10-25 02:30:00 UTC+01:00");
    EXPECT_EQ(LocalText::minute(at("2026-10-25 01:59:59"), centralEurope), "2026-10-25 02:59 UTC+01:00");
    EXPECT_EQ(LocalText::minute(at("2026-10-25 02:00"), centralEurope), "2026-10-25 03:00");
    EXPECT_EQ(LocalText::minute(at("2026-03-29 00:59"), centralEurope), "2026-03-29 01:59");
    EXPECT_EQ(LocalText::minute(at("2026-03-29 01:00"), centralEurope), "2026-03-29 03:00");
}

TEST(LocalText, ZonesAreThoseOfTheWholeTime) {
    const auto fixed = [](HistoryTime) { return -(3h + 30min); };
    EXPECT_EQ(LocalText::zone(at("2026-01-05 12:00"), fixed), "UTC-03:30");
    EXPECT_EQ(LocalText::zones(test::between("2026-01-05 12:00", "2026-02-05 12:00"), fixed), "UTC-03:30");
    EXPECT_EQ(
        LocalText::zones(test::between("2026-02-05 12:00", "2026-11-05 12:00"), centralEurope),
        "UTC+01:00, from 2026-03-29 on UTC+02:00, from 2026-10-25 on UTC+01:00");
    EXPECT_EQ(
        LocalText::zones(test::between("2026-03-29 00:30", "2026-03-29 01:00"), centralEurope), "UTC+01:00");
    EXPECT_EQ(
        LocalText::zones(test::between("2026-03-29 00:30", "2026-03-29 01:00:01"), centralEurope),
        "UTC+01:00, from 2026-03-29 on UTC+02:00");
}

TEST(LocalText, IsoTimesTellTheOffsetSoThatTheRepeatedHourIsClear) {
    EXPECT_EQ(LocalText::isoTime(at("2026-10-25 00:30"), centralEurope), "2026-10-25T02:30:00+02:00");
    EXPECT_EQ(LocalText::isoTime(at("2026-10-25 01:30"), centralEurope), "2026-10-25T02:30:00+01:00");
    EXPECT_EQ(
        LocalText::isoTime(at("2026-01-05 12:00"), [](HistoryTime) { return -(3h + 30min); }),
        "2026-01-05T08:30:00-03:30");
}

TEST(LocalText, LengthsHaveTheirTwoLargestUnits) {
    EXPECT_EQ(LocalText::length(0s), "0 s");
    EXPECT_EQ(LocalText::length(42s), "42 s");
    EXPECT_EQ(LocalText::length(60s), "1 min");
    EXPECT_EQ(LocalText::length(187s), "3 min 7 s");
    EXPECT_EQ(LocalText::length(3600s), "1 h");
    EXPECT_EQ(LocalText::length(3605s), "1 h");
    EXPECT_EQ(LocalText::length(5h + 12min + 30s), "5 h 12 min");
    EXPECT_EQ(LocalText::length(76h), "3 d 4 h");
}

TEST(LocalText, LengthsAreToTheNearestSecond) {
    EXPECT_EQ(LocalText::length(59.4), "59 s");
    EXPECT_EQ(LocalText::length(59.5), "1 min");
}

TEST(LocalText, LatenciesHaveATenthOfAMillisecond) {
    EXPECT_EQ(LocalText::milliseconds(12.34), "12.3 ms");
    EXPECT_EQ(LocalText::milliseconds(std::nullopt), "unknown");
    EXPECT_EQ(LocalText::number(2.5, 2), "2.50");
}

TEST(LocalText, OnlyAWholeTimeIsAvailableThroughout) {
    EXPECT_EQ(LocalText::availability(100), "100%");
    EXPECT_EQ(LocalText::availability(99.99999), "99.999%");
    EXPECT_EQ(LocalText::availability(0), "0.000%");
    EXPECT_EQ(LocalText::availability(std::nullopt), "unknown");
}

} // namespace
} // namespace tarnwick
