// The statistics grid as texts.
#include "app/Reading/StatsGrid.h"

#include "tests/core/Required.h"
#include "tests/support/MadeLocale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Rows = std::array<StatsGrid::Row, StatsGrid::rowCount>;

/// The rows with `counter` as the session's, beside an empty one.
Rows rowsOf(const StatCounter& counter) {
    return StatsGrid::rows(counter, {}, {});
}

enum Line : std::size_t { sent, lost, loss, average, fastest, slowest };

} // namespace

TEST(StatsGrid, HasItsRowsInOrder) {
    std::vector<std::string> labels;
    for (const StatsGrid::Row& row : rowsOf({})) {
        labels.push_back(row.label);
    }

    EXPECT_THAT(
        labels,
        testing::ElementsAre("Pings sent", "Replies lost", "Packet loss", "Average", "Fastest", "Slowest"));
    EXPECT_STREQ(StatsGrid::sessionTitle, "Session");
    EXPECT_STREQ(StatsGrid::allTimeTitle, "All Time");
}

TEST(StatsGrid, SessionAndAllTimeStandInTheirColumns) {
    const test::MadeLocale locale("en_US");
    if (!locale.isMade()) {
        TARNWICK_CANNOT_RUN("localedef is missing");
    }
    const StatCounter session{
        .sent = 1204, .replied = 1200, .lost = 4, .averageMs = 23, .fastestMs = 9, .slowestMs = 87};
    const StatCounter allTime{
        .sent = 88310, .replied = 80000, .lost = 8310, .averageMs = 140, .fastestMs = 8, .slowestMs = 3999};

    const Rows rows = StatsGrid::rows(session, allTime, Format::Grouping(locale.name()));

    std::vector<std::pair<std::string, std::string>> values;
    for (const StatsGrid::Row& row : rows) {
        values.emplace_back(row.session, row.allTime);
    }
    EXPECT_THAT(
        values, testing::ElementsAre(
                    testing::Pair("1,204", "88,310"), testing::Pair("4", "8,310"),
                    testing::Pair("0.3%", "9.4%"), testing::Pair("23.0 ms", "140 ms"),
                    testing::Pair("9.0 ms", "8.0 ms"), testing::Pair("87.0 ms", "3999 ms")));
}

TEST(StatsGrid, ACounterWithoutRepliesShowsDashesForItsTimes) {
    const Rows rows = rowsOf({.sent = 5, .lost = 5, .averageMs = 7, .fastestMs = 7, .slowestMs = 7});

    EXPECT_EQ(rows[average].session, "–");
    EXPECT_EQ(rows[fastest].session, "–");
    EXPECT_EQ(rows[slowest].session, "–");
}

struct Loss {
    std::int64_t sent;
    std::int64_t lost;
    std::string text;
};

class PacketLoss : public testing::TestWithParam<Loss> {};

TEST_P(PacketLoss, IsWrittenWithOneDecimalUnlessItIsNone) {
    EXPECT_EQ(rowsOf({.sent = GetParam().sent, .lost = GetParam().lost})[loss].session, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    StatsGrid, PacketLoss,
    testing::Values(
        Loss{0, 0, "0%"}, Loss{0, 3, "0%"}, Loss{100, 0, "0%"}, Loss{8, 1, "12.5%"}, Loss{3, 1, "33.3%"},
        Loss{1, 1, "100.0%"}, Loss{10000, 1, "0.0%"}));

struct Time {
    double ms;
    std::string text;
};

class RoundTripTime : public testing::TestWithParam<Time> {};

TEST_P(RoundTripTime, HasOneDecimalBelow100MillisecondsAndNoneFromThereOn) {
    const double ms = GetParam().ms;

    const Rows rows = rowsOf({.sent = 1, .replied = 1, .averageMs = ms, .fastestMs = ms, .slowestMs = ms});

    EXPECT_EQ(rows[average].session, GetParam().text);
    EXPECT_EQ(rows[fastest].session, GetParam().text);
    EXPECT_EQ(rows[slowest].session, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    StatsGrid, RoundTripTime,
    testing::Values(
        Time{0.013, "0.01 ms"}, Time{0.0499, "0.05 ms"}, Time{0.06, "0.1 ms"}, Time{9.25, "9.2 ms"},
        Time{99.94, "99.9 ms"}, Time{99.96, "100.0 ms"}, Time{100, "100 ms"}, Time{100.6, "101 ms"},
        Time{1234.4, "1234 ms"}));

TEST(StatsGrid, EachRowSaysItselfAloud) {
    const Rows rows = StatsGrid::rows({.sent = 1204}, {.sent = 88310}, {});

    EXPECT_EQ(rows[sent].summary(), "Pings sent: session 1204, all time 88310");
    EXPECT_EQ(rows[lost].summary(), "Replies lost: session 0, all time 0");
}

} // namespace tarnwick
