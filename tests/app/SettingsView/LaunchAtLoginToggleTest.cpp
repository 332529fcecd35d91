// The switch that lets the program start with the user's session.
#include "app/SettingsView/LaunchAtLoginToggle.h"

#include "tests/simulation/FakeLoginItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Status = LoginItem::Status;
using testing::Eq;

class LaunchAtLoginToggleTest : public testing::Test {
protected:
    [[nodiscard]] LaunchAtLoginToggle& toggle() {
        if (!toggle_) {
            toggle_.emplace(item);
            toggle_->onApprovalNeeded = [this] { ++approvalsAskedFor; };
        }
        return *toggle_;
    }

    simulation::FakeLoginItem item;
    int approvalsAskedFor = 0;

private:
    std::optional<LaunchAtLoginToggle> toggle_;
};

} // namespace

TEST_F(LaunchAtLoginToggleTest, ItBeginsOffWhereNothingIsRegistered) {
    EXPECT_FALSE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, ItBeginsOnWhereTheItemIsEnabled) {
    item.now = Status::enabled;

    EXPECT_TRUE(toggle().isOn());
}

TEST_F(LaunchAtLoginToggleTest, ItBeginsOnWhereApprovalIsMissing) {
    item.now = Status::requiresApproval;

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, TurnedOnItRegisters) {
    toggle().set(true);

    EXPECT_EQ(item.enrollments, 1);
    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, TurnedOffItUnregisters) {
    item.now = Status::enabled;
    toggle().set(false);

    EXPECT_EQ(item.withdrawals, 1);
    EXPECT_FALSE(toggle().isOn());
}

TEST_F(LaunchAtLoginToggleTest, TurnedOffWhileApprovalIsMissingItUnregisters) {
    item.now = Status::requiresApproval;
    toggle().set(false);

    EXPECT_EQ(item.withdrawals, 1);
    EXPECT_FALSE(toggle().isOn());
}

TEST_F(LaunchAtLoginToggleTest, TurnedOnWhileApprovalIsMissingItChangesNothingAndReportsNoError) {
    static_cast<void>(toggle());
    item.now = Status::requiresApproval;
    toggle().set(true);

    EXPECT_EQ(item.enrollments, 0);
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, WhatHoldsAlreadyIsNotAskedForAgain) {
    static_cast<void>(toggle());
    item.now = Status::enabled;
    toggle().set(true);
    item.now = Status::notRegistered;
    toggle().set(false);

    EXPECT_EQ(item.enrollments, 0);
    EXPECT_EQ(item.withdrawals, 0);
}

TEST_F(LaunchAtLoginToggleTest, WhenApprovalIsNeededItSaysSoAndShowsWhere) {
    item.afterEnrolling = Status::requiresApproval;
    toggle().set(true);

    EXPECT_THAT(toggle().message(), Eq("Approve Tarnwick in your desktop's startup settings."));
    EXPECT_EQ(approvalsAskedFor, 1);
    EXPECT_TRUE(toggle().isOn());
}

TEST_F(LaunchAtLoginToggleTest, AFailedRegistrationTurnsItBackAndIsReported) {
    item.failure = "No room left";
    toggle().set(true);

    EXPECT_FALSE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq("No room left"));
}

TEST_F(LaunchAtLoginToggleTest, AFailedUnregistrationTurnsItBackAndIsReported) {
    item.now = Status::enabled;
    item.failure = "Read-only";
    toggle().set(false);

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq("Read-only"));
}

TEST_F(LaunchAtLoginToggleTest, TheNextSuccessForgetsTheMessage) {
    item.failure = "No room left";
    toggle().set(true);
    item.failure.reset();
    toggle().set(true);

    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
    EXPECT_TRUE(toggle().isOn());
}

TEST_F(LaunchAtLoginToggleTest, AWishThatHoldsAlreadyForgetsTheMessage) {
    item.failure = "No room left";
    toggle().set(true);
    toggle().set(false);

    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, ItCanBeReadAfresh) {
    item.failure = "No room left";
    toggle().set(true);
    item.now = Status::enabled;
    toggle().refresh();

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

} // namespace tarnwick
