// Times as people write them for a report.
#include "app/Report/TimeArgument.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;

const HistoryTime presentTime = at("2026-11-23 13:50:11");

std::optional<HistoryTime> timeOf(const std::string& text) {
    return timeIn(text, presentTime, test::centralEurope);
}

TEST(TimeArgument, IsHowLongAgo) {
    EXPECT_EQ(timeOf("0m"), presentTime);
    EXPECT_EQ(timeOf("30m"), at("2026-11-23 13:20:11"));
    EXPECT_EQ(timeOf("12h"), at("2026-11-23 01:50:11"));
    EXPECT_EQ(timeOf("7d"), at("2026-11-16 13:50:11"));
    EXPECT_EQ(timeOf("4w"), at("2026-10-26 13:50:11"));
}

TEST(TimeArgument, IsADayOfTheLocalCalendar) {
    EXPECT_EQ(timeOf("2026-11-20"), at("2026-11-19 23:00"));
    EXPECT_EQ(timeOf("2026-07-20"), at("2026-07-19 22:00"));
}

TEST(TimeArgument, IsAMomentByTheLocalClock) {
    EXPECT_EQ(timeOf("2026-11-20T14:05"), at("2026-11-20 13:05"));
    EXPECT_EQ(timeOf("2026-03-29T12:00"), at("2026-03-29 10:00"));
    EXPECT_EQ(timeOf("2026-10-25T12:00"), at("2026-10-25 11:00"));
    EXPECT_EQ(timeOf("2026-10-25T01:59"), at("2026-10-24 23:59"));
    EXPECT_EQ(timeOf("2026-11-20T23:59"), at("2026-11-20 22:59"));
    EXPECT_EQ(timeOf("2026-11-20T00:00"), at("2026-11-19 23:00"));
}

TEST(TimeArgument, OfARepeatedHourIsTheFirstOne) {
    EXPECT_EQ(timeOf("2026-10-25T02:30"), at("2026-10-25 00:30"));
    EXPECT_EQ(timeOf("2026-10-25T03:00"), at("2026-10-25 02:00"));
}

TEST(TimeArgument, OfAnHourThatIsLeftOutIsTheOneBefore) {
    EXPECT_EQ(timeOf("2026-03-29T02:30"), at("2026-03-29 00:30"));
    EXPECT_EQ(timeOf("2026-03-29T03:00"), at("2026-03-29 01:00"));
}

/// From UTC-4 to UTC-3 at midnight.
std::chrono::seconds aheadAtMidnight(HistoryTime time) {
    return time < at("2026-09-06 04:00") ? std::chrono::hours(-4) : std::chrono::hours(-3);
}

TEST(TimeArgument, ADayMayBeginAtOne) {
    EXPECT_EQ(timeIn("2026-09-06", presentTime, aheadAtMidnight), at("2026-09-06 04:00"));
    EXPECT_EQ(timeIn("2026-09-06T10:00", presentTime, aheadAtMidnight), at("2026-09-06 13:00"));
    EXPECT_EQ(timeIn("2026-09-07T10:00", presentTime, aheadAtMidnight), at("2026-09-07 13:00"));
    EXPECT_EQ(timeIn("2026-09-05T10:00", presentTime, aheadAtMidnight), at("2026-09-05 14:00"));
}

TEST(TimeArgument, IsNothingElse) {
    for (const char* text :
         {"", "7", "d", "-7d", "7 d", "7y", "1234567d", "2026-13-01", "20261-11-23", "2026-02-30", "2026-1-1",
          "20261123", "2026-11-23T", "2026-11-23T24:00", "2026-11-23T12:60", "2026-11-23T12:00:00",
          "2026-11-23 12:00", "yesterday"}) {
        EXPECT_EQ(timeOf(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace tarnwick
