// What the X11 room does without a display. What it does on one is tested in real panels, by tests/desktop.
#include "platform/x11/Activation.h"
#include "platform/x11/PressWatch.h"
#include "platform/x11/X11Connection.h"

#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/Variable.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace tarnwick::X11 {

namespace {

class WithoutDisplay : public testing::Test {
private:
    const test::Variable display_{"DISPLAY", nullptr};
};

} // namespace

TEST_F(WithoutDisplay, ThereIsNoConnection) {
    EXPECT_EQ(connect(), nullptr);
}

TEST_F(WithoutDisplay, NoPressIsTold) {
    simulation::VirtualRunLoop loop;
    int told = 0;

    const PressWatch watch(loop, [&told](const PressWatch::Buttons&) { ++told; });
    loop.advance(1);

    EXPECT_EQ(told, 0);
    EXPECT_EQ(loop.timerCount(), 0);
}

TEST_F(WithoutDisplay, AnActivationIsNotRequested) {
    EXPECT_NO_THROW(requestActivation(1));
}

TEST(X11EventType, LeavesOutWhetherAnotherProgramHasSentTheEvent) {
    constexpr std::uint8_t propertyNotify = 28;
    constexpr std::uint8_t sentByAProgram = 0x80;

    EXPECT_EQ(eventType(propertyNotify), propertyNotify);
    EXPECT_EQ(eventType(sentByAProgram | propertyNotify), propertyNotify);
}

} // namespace tarnwick::X11
