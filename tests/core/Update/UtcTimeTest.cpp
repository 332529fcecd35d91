// Which texts are points in time.
#include "core/Update/UtcTime.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(UtcTime, CountsTheSecondsSinceTheEpoch) {
    EXPECT_EQ(parseUtcTime("2026-11-23T04:05:06Z").value().time_since_epoch().count(), 1795406706);
    EXPECT_EQ(parseUtcTime("2000-01-01T00:00:00Z").value().time_since_epoch().count(), 946684800);
    EXPECT_EQ(parseUtcTime("2199-12-31T23:59:59Z").value().time_since_epoch().count(), 7258118399);
    EXPECT_EQ(parseUtcTime("2028-02-29T23:59:59Z").value().time_since_epoch().count(), 1835481599);
}

class NoUtcTime : public testing::TestWithParam<std::string_view> {};

INSTANTIATE_TEST_SUITE_P(
    OtherNotations, NoUtcTime,
    testing::Values(
        "", "2026-11-23", "2026-11-23T04:05:06", "2026-11-23T04:05:06+00:00", "2026-11-23 04:05:06Z",
        "2026-11-23t04:05:06z", "2026-11-23T04:05Z", "2026-11-23T04:05:06.0Z", "20261123T040506Z",
        "2026-11-23T04:05:06Z ", " 2026-11-23T04:05:06Z", "2026-11-2xT04:05:06Z", "+026-11-23T04:05:06Z",
        "2026-11-23T-4:05:06Z"));

INSTANTIATE_TEST_SUITE_P(
    NoSuchTime, NoUtcTime,
    testing::Values(
        "2026-02-29T04:05:06Z", "2026-13-01T04:05:06Z", "2026-00-01T04:05:06Z", "2026-04-31T04:05:06Z",
        "2026-11-00T04:05:06Z", "2026-11-23T24:00:00Z", "2026-11-23T04:60:00Z", "2026-11-23T04:05:60Z",
        "1999-12-31T23:59:59Z", "2200-01-01T00:00:00Z", "0000-00-00T00:00:00Z"));

TEST_P(NoUtcTime, IsRefused) {
    EXPECT_FALSE(parseUtcTime(GetParam()));
}

} // namespace
} // namespace tarnwick
