// The switch that lets the program start with the user's session.
#include "app/SettingsView/Model/LaunchAtLoginToggle.h"

#include "platform/xdg/AutostartEntry.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace tarnwick {

namespace {

using Status = LoginItem::Status;
using testing::Eq;

class LaunchAtLoginToggleTest : public testing::Test {
protected:
    [[nodiscard]] LaunchAtLoginToggle& toggle() {
        if (!toggle_) {
            toggle_.emplace(item);
            toggle_->showApproval = [this] { ++approvalsAskedFor; };
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

TEST_F(LaunchAtLoginToggleTest, ItBeginsOnAndSaysSoWhereApprovalIsMissing) {
    item.now = Status::requiresApproval;

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(LaunchAtLoginToggle::approvalText));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, TurnedOnItRegisters) {
    toggle().set(true);

    EXPECT_EQ(item.enrollments, 1);
    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, ALaterRefusalTurnsItOffAndSaysWhy) {
    toggle().set(true);
    item.now = Status::notRegistered;

    item.onAnswer("no");

    EXPECT_FALSE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq("no"));
}

TEST_F(LaunchAtLoginToggleTest, ALaterConsentDropsTheFailureOfBefore) {
    item.failure = "no";
    toggle().set(true);
    item.now = Status::enabled;

    item.onAnswer("");

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
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

TEST_F(LaunchAtLoginToggleTest, TurnedOnWithoutApprovalItChangesAndReportsNothing) {
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

TEST_F(LaunchAtLoginToggleTest, ReadAfreshItSaysThatApprovalIsMissingAndShowsNothing) {
    item.now = Status::enabled;
    static_cast<void>(toggle());
    item.now = Status::requiresApproval;
    toggle().refresh();

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(LaunchAtLoginToggle::approvalText));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, ItFollowsAnApprovalGivenElsewhere) {
    item.now = Status::requiresApproval;
    static_cast<void>(toggle());
    item.now = Status::enabled;
    toggle().follow();

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, ItFollowsAnApprovalWithdrawnElsewhere) {
    item.now = Status::enabled;
    static_cast<void>(toggle());
    item.now = Status::requiresApproval;
    toggle().follow();

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(LaunchAtLoginToggle::approvalText));
    EXPECT_EQ(approvalsAskedFor, 0);
}

TEST_F(LaunchAtLoginToggleTest, ItFollowsAnItemThatIsRemovedElsewhere) {
    item.now = Status::requiresApproval;
    static_cast<void>(toggle());
    item.now = Status::notRegistered;
    toggle().follow();

    EXPECT_FALSE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, FollowingKeepsTheFailureThatWasReported) {
    item.failure = "No room left";
    toggle().set(true);
    item.now = Status::requiresApproval;
    toggle().follow();

    EXPECT_TRUE(toggle().isOn());
    EXPECT_THAT(toggle().message(), Eq("No room left"));
}

TEST_F(LaunchAtLoginToggleTest, TurnedOffAfterItWasRemovedElsewhereItNeedsNoApproval) {
    item.now = Status::requiresApproval;
    static_cast<void>(toggle());
    item.now = Status::notRegistered;
    toggle().set(false);

    EXPECT_THAT(toggle().message(), Eq(std::nullopt));
}

TEST_F(LaunchAtLoginToggleTest, LeadsToTheApprovalThatIsMissingWhereItCanBeShown) {
    EXPECT_FALSE(toggle().leadsToApproval());
    item.now = Status::requiresApproval;
    toggle().follow();
    EXPECT_TRUE(toggle().leadsToApproval());

    toggle().showApproval = nullptr;
    EXPECT_FALSE(toggle().leadsToApproval());
}

TEST_F(LaunchAtLoginToggleTest, AFailureLeadsToNoApproval) {
    item.failure = "No room left";
    toggle().set(true);
    item.now = Status::requiresApproval;
    toggle().follow();

    EXPECT_FALSE(toggle().leadsToApproval());
}

// Over the entry that desktops read.

namespace {

class LaunchAtLoginEntryTest : public testing::Test {
protected:
    /// As a desktop's own tool does.
    void addToEntry(const std::string& line) { test::writeFile(file_, test::contentOf(file_) + line + "\n"); }

    AutostartEntry entry() {
        return {"/bin/sh", {.userFolder = folder_.path(), .systemFolders = {}, .desktops = {}}};
    }

private:
    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "autostart" / "org.tarnwick.tarnwick.desktop";
};

/// With the line by which a desktop switches an entry off.
class SwitchedOffEntryTest : public LaunchAtLoginEntryTest,
                             public testing::WithParamInterface<const char*> {};

} // namespace

TEST_P(SwitchedOffEntryTest, IsOnAndAsksForApproval) {
    AutostartEntry item = entry();
    LaunchAtLoginToggle toggle(item);
    toggle.set(true);
    ASSERT_THAT(toggle.message(), Eq(std::nullopt));
    addToEntry(GetParam());
    toggle.refresh();

    EXPECT_TRUE(toggle.isOn());
    EXPECT_THAT(toggle.message(), Eq(LaunchAtLoginToggle::approvalText));
}

TEST_P(SwitchedOffEntryTest, IsEnabledByTurningItOffAndOn) {
    AutostartEntry item = entry();
    LaunchAtLoginToggle toggle(item);
    toggle.set(true);
    addToEntry(GetParam());
    toggle.refresh();
    toggle.set(false);
    EXPECT_EQ(item.status(), Status::notRegistered);
    toggle.set(true);

    EXPECT_EQ(item.status(), Status::enabled);
    EXPECT_THAT(toggle.message(), Eq(std::nullopt));
}

INSTANTIATE_TEST_SUITE_P(
    AllSwitches, SwitchedOffEntryTest, testing::Values("X-GNOME-Autostart-enabled=false", "Hidden=true"),
    [](const auto& test) { return test.index == 0 ? "OfGnome" : "OfAllOthers"; });

} // namespace tarnwick
