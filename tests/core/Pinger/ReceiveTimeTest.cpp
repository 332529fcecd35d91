// When a datagram counts as arrived, given the clocks and the kernel's stamp.
#include "core/Pinger/ReceiveTime.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

constexpr double monotonic = 5'000;
constexpr double wallAhead = 1'700'000'000;
constexpr double wall = monotonic + wallAhead;
// The wall clock's seconds leave some tenths of a microsecond to a double.
constexpr double tolerance = 1e-6;

TEST(ReceiveTime, WithoutAStampIsTheMonotonicReading) {
    EXPECT_EQ(receiveTime({.monotonic = monotonic, .wall = wall, .stamp = {}}, wallAhead), monotonic);
}

TEST(ReceiveTime, OfAnIdleThreadIsTheTimeOfTheStampToo) {
    EXPECT_NEAR(
        receiveTime({.monotonic = monotonic, .wall = wall, .stamp = wall - 2e-5}, wallAhead),
        monotonic - 2e-5, tolerance);
}

TEST(ReceiveTime, OfABusyThreadIsTheTimeOfTheStamp) {
    EXPECT_NEAR(
        receiveTime({.monotonic = monotonic, .wall = wall, .stamp = wall - 0.02}, wallAhead),
        monotonic - 0.02, tolerance);
}

TEST(ReceiveTime, OfAThreadThatWasStoppedForSecondsIsTheTimeOfTheStamp) {
    EXPECT_NEAR(
        receiveTime({.monotonic = monotonic, .wall = wall, .stamp = wall - 30}, wallAhead), monotonic - 30,
        tolerance);
}

TEST(ReceiveTime, DoesNotTrustTheStampOnceTheWallClockWasSetForward) {
    const double later = wall + 3600;
    EXPECT_EQ(
        receiveTime({.monotonic = monotonic, .wall = later, .stamp = wall - 0.02}, wallAhead), monotonic);
}

TEST(ReceiveTime, DoesNotTrustTheStampOnceTheWallClockWasSetBack) {
    const double earlier = wall - 3600;
    EXPECT_EQ(
        receiveTime({.monotonic = monotonic, .wall = earlier, .stamp = earlier - 0.02}, wallAhead),
        monotonic);
}

struct Jump {
    double seconds;
    bool isSet;
};

class WallClockJump : public testing::TestWithParam<Jump> {};

TEST_P(WallClockJump, OfMoreThanTenMillisecondsIsNoSlewing) {
    const auto [jump, isSet] = GetParam();
    const double moved = wall + jump;

    EXPECT_NEAR(
        receiveTime({.monotonic = monotonic, .wall = moved, .stamp = moved - 0.02}, wallAhead),
        isSet ? monotonic : monotonic - 0.02, tolerance);
}

INSTANTIATE_TEST_SUITE_P(
    ReceiveTime, WallClockJump,
    testing::Values(Jump{0.0099, false}, Jump{0.0101, true}, Jump{-0.0099, false}, Jump{-0.0101, true}));

TEST(ReceiveTime, TrustsTheStampAtTheLimit) {
    EXPECT_EQ(receiveTime({.monotonic = 0, .wall = 0.01, .stamp = 0}, 0), -0.01);
}

TEST(ReceiveTime, IsNeverAfterTheMonotonicReading) {
    EXPECT_EQ(receiveTime({.monotonic = monotonic, .wall = wall, .stamp = wall + 5}, wallAhead), monotonic);
}

} // namespace
} // namespace tarnwick
