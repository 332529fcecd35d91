// How the program is kept up to date, as the settings window shows and changes it.
#include "app/SettingsView/Model/UpdateSettings.h"

#include "tests/simulation/FakeSoftwareUpdates.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::StartsWith;

class UpdateSettingsTest : public testing::Test {
protected:
    /// Whether the next change of anything shown is noticed while `change` runs.
    template<class Change>
    bool tellsOf(Change change) {
        bool isTold = false;
        const TrackingHandle tracking = withTracking(
            [this] {
                static_cast<void>(settings.checksAutomatically());
                static_cast<void>(settings.installsAutomatically());
                static_cast<void>(settings.lastChecked());
                static_cast<void>(settings.canCheck());
                static_cast<void>(settings.explanation());
            },
            [&isTold] { isTold = true; });
        change();
        return isTold;
    }

    const RunLoop::WallTime noon{std::chrono::hours(12)};
    simulation::FakeSoftwareUpdates updates;
    UpdateSettings settings{updates};
};

} // namespace

TEST_F(UpdateSettingsTest, WhatIsSetHoldsAtOnce) {
    settings.setChecksAutomatically(true);
    EXPECT_TRUE(updates.checks.get());
    EXPECT_TRUE(settings.checksAutomatically());

    settings.setInstallsAutomatically(true);
    EXPECT_TRUE(updates.downloads.get());
    EXPECT_TRUE(settings.installsAutomatically());

    settings.setChecksAutomatically(false);
    EXPECT_FALSE(updates.checks.get());
}

TEST_F(UpdateSettingsTest, CheckingNowChecks) {
    settings.checkNow();

    EXPECT_EQ(updates.checksAskedFor, 1);
}

TEST_F(UpdateSettingsTest, ItTellsOfChanges) {
    EXPECT_TRUE(tellsOf([this] { settings.setInstallsAutomatically(true); }));
    EXPECT_TRUE(tellsOf([this] { updates.lastCheck.set(noon); }));
    EXPECT_TRUE(tellsOf([this] { updates.canCheck.set(false); }));
    EXPECT_TRUE(tellsOf([this] { updates.problem.set("It failed."); }));
    EXPECT_FALSE(tellsOf([this] { updates.lastCheck.set(noon); }));
}

TEST_F(UpdateSettingsTest, ItExplainsWhoIsAskedAndWhatComesOfIt) {
    EXPECT_EQ(
        settings.explanation(),
        "Once a day, Tarnwick asks updates.example whether a newer version exists. You are asked before an "
        "update is installed, unless you turn on automatic installs.");
}

TEST_F(UpdateSettingsTest, ItSaysFirstWhatWentWrong) {
    updates.problem.set("The update server does not answer.");

    EXPECT_THAT(settings.explanation(), StartsWith("The update server does not answer. Once a day, "));
}

} // namespace tarnwick
