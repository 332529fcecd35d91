// Starting with the session as the user wishes: when the login item is changed, and when it is left alone.
#include "app/SettingsView/Model/LaunchAtLogin.h"

#include "tests/simulation/FakeLoginItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Status = LoginItem::Status;

struct Wish {
    std::string name;
    Status status;
    bool isEnabled;
    int enrollments;
    int withdrawals;

    friend void PrintTo(const Wish& wish, std::ostream* out) { *out << wish.name; }
};

class LaunchAtLoginTest : public testing::TestWithParam<Wish> {
protected:
    LaunchAtLoginTest() { item_.now = GetParam().status; }

    simulation::FakeLoginItem item_;
};

} // namespace

TEST_P(LaunchAtLoginTest, ChangesTheItemOnlyWhereItDiffersFromTheWish) {
    EXPECT_EQ(LaunchAtLogin::set(item_, GetParam().isEnabled), std::nullopt);

    EXPECT_EQ(item_.enrollments, GetParam().enrollments);
    EXPECT_EQ(item_.withdrawals, GetParam().withdrawals);
}

TEST_P(LaunchAtLoginTest, TellsAFailureOnlyWhereSomethingIsToBeChanged) {
    item_.failure = "No room.";

    const auto failure = LaunchAtLogin::set(item_, GetParam().isEnabled);

    const bool isChange = GetParam().enrollments + GetParam().withdrawals > 0;
    EXPECT_EQ(failure, isChange ? std::optional<std::string>("No room.") : std::nullopt);
    EXPECT_EQ(item_.now, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    AllStates, LaunchAtLoginTest,
    testing::Values(
        Wish{"EnabledStaysSo", Status::enabled, true, 0, 0},
        Wish{"EnabledIsWithdrawn", Status::enabled, false, 0, 1},
        Wish{"ThatRequiresApprovalIsLeftToTheUser", Status::requiresApproval, true, 0, 0},
        Wish{"ThatRequiresApprovalIsWithdrawn", Status::requiresApproval, false, 0, 1},
        Wish{"NotRegisteredIsEnrolled", Status::notRegistered, true, 1, 0},
        Wish{"NotRegisteredStaysSo", Status::notRegistered, false, 0, 0}),
    [](const auto& test) { return test.param.name; });

} // namespace tarnwick
