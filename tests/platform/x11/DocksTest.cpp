// What docks leave of monitors. Docks of real panels are read in tests/desktop.
#include "platform/x11/Docks.h"

#include "tests/support/Variable.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarnwick::X11 {

namespace {

constexpr Area left{.x = 0, .y = 0, .width = 1280, .height = 800};
constexpr Area right{.x = 1280, .y = 0, .width = 1024, .height = 768};
constexpr Area desktop{.x = 0, .y = 0, .width = 2304, .height = 800};

Docks one(const Dock& dock) {
    return {.desktop = desktop, .docks = {dock}};
}

} // namespace

TEST(X11Docks, WithoutDocksAMonitorIsFree) {
    EXPECT_EQ(Docks{.desktop = desktop}.freeOf(right), right);
}

TEST(X11Docks, APanelTakesTheTopOfItsMonitorAlone) {
    const Docks docks = one({
        .window = {.x = 0, .y = 0, .width = 1280, .height = 26},
        .strut = {0, 0, 26, 0, 0, 0, 0, 0, 0, 1279, 0, 0},
    });

    EXPECT_EQ(docks.freeOf(left), (Area{.x = 0, .y = 26, .width = 1280, .height = 774}));
    EXPECT_EQ(docks.freeOf(right), right);
}

TEST(X11Docks, AtTheBottomItCountsFromTheEndOfTheDesktop) {
    const Docks docks = one({
        .window = {.x = 1280, .y = 736, .width = 1024, .height = 32},
        .strut = {0, 0, 0, 32 + 32, 0, 0, 0, 0, 0, 0, 1280, 2303},
    });

    EXPECT_EQ(docks.freeOf(right), (Area{.x = 1280, .y = 0, .width = 1024, .height = 736}));
    EXPECT_EQ(docks.freeOf(left), left);
}

TEST(X11Docks, BetweenTwoMonitorsItTakesRoomOfItsOwn) {
    const Docks docks = one({
        .window = {.x = 1280, .y = 0, .width = 48, .height = 768},
        .strut = {1280 + 48, 0, 0, 0, 0, 767, 0, 0, 0, 0, 0, 0},
    });

    EXPECT_EQ(docks.freeOf(right), (Area{.x = 1328, .y = 0, .width = 976, .height = 768}));
    EXPECT_EQ(docks.freeOf(left), left);
}

TEST(X11Docks, SeveralTakeRoomTogether) {
    const Docks docks{
        .desktop = desktop,
        .docks = {
            {.window = {.x = 0, .y = 0, .width = 1280, .height = 26},
             .strut = {0, 0, 26, 0, 0, 0, 0, 0, 0, 1279, 0, 0}},
            {.window = {.x = 1240, .y = 26, .width = 40, .height = 774},
             .strut = {0, 1024 + 40, 0, 0, 0, 0, 26, 799, 0, 0, 0, 0}},
        }};

    EXPECT_EQ(docks.freeOf(left), (Area{.x = 0, .y = 26, .width = 1240, .height = 774}));
}

TEST(X11Docks, AStrutThatLeavesNothingIsNone) {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    const Docks docks = one({.window = left, .strut = {0, 0, most, 0, 0, most, 0, most, 0, most, 0, most}});

    EXPECT_EQ(docks.freeOf(left), left);
}

TEST(X11Docks, WithoutADisplayThereAreNone) {
    const test::Variable display("DISPLAY", nullptr);

    EXPECT_TRUE(findDocks().docks.empty());
}

} // namespace tarnwick::X11
