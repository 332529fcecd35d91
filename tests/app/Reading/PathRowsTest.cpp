// The path as texts.
#include "app/Reading/PathRows.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(PathRows, EachHopHasItsNumberAddressLossAndLatestAnswer) {
    const auto rows = pathRows(
        {{.address = "192.0.2.1", .name = "router.example", .samples = {{.ms = 8.4}}},
         {.address = "198.51.100.1", .samples = {{.ms = 30}, {.ms = 84}, {}, {}}},
         {},
         {.address = "203.0.113.9", .isHost = true, .samples = {{}, {}}}});

    const std::vector<PathRow> expected{
        {.hop = "1",
         .address = "192.0.2.1",
         .name = "router.example",
         .loss = "0%",
         .latency = "8 ms",
         .barShare = 0.1},
        {.hop = "2",
         .address = "198.51.100.1",
         .loss = "50%",
         .latency = "84 ms",
         .barShare = 1,
         .isLossy = true},
        {.hop = "3", .address = "No answer", .loss = "—", .latency = "—"},
        {.hop = "4", .address = "203.0.113.9", .loss = "100%", .latency = "—", .isLossy = true}};
    EXPECT_EQ(rows, expected);
}

TEST(PathRows, AreReadAsSentences) {
    const auto rows = pathRows(
        {{.address = "192.0.2.1", .name = "router.example", .samples = {{.ms = 1.6}}},
         {},
         {.address = "203.0.113.9", .isHost = true, .samples = {{}, {}}}});

    EXPECT_EQ(rows[0].summary(), "Hop 1, 192.0.2.1, router.example, 0% lost, 2 ms");
    EXPECT_EQ(rows[1].summary(), "Hop 2, No answer");
    EXPECT_EQ(rows[2].summary(), "Hop 3, 203.0.113.9, 100% lost");
}

TEST(PathRows, ShortLatenciesLookShort) {
    const auto rows = pathRows({{.samples = {{}}}, {.samples = {{.ms = 0.4}}}, {.samples = {{.ms = 5}}}});

    EXPECT_EQ(rows[0].barShare, 0);
    EXPECT_EQ(rows[1].latency, "<1 ms");
    EXPECT_EQ(rows[2].barShare, 0.25);
}

} // namespace
} // namespace tarnwick
