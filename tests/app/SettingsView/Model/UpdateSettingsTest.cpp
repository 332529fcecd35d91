// How the program is kept up to date, as the settings window shows and changes it.
#include "app/SettingsView/Model/UpdateSettings.h"

#include "tests/simulation/FakeUpdateFramework.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::Eq;
using testing::Optional;

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
            },
            [&isTold] { isTold = true; });
        change();
        return isTold;
    }

    const RunLoop::WallTime noon{std::chrono::hours(12)};
    simulation::FakeUpdateFramework framework;
    UpdateSettings settings{framework};
};

} // namespace

TEST_F(UpdateSettingsTest, BeforeTheFirstReadingAllIsOff) {
    framework.checks = true;
    framework.downloads = true;
    framework.lastCheck = noon;

    EXPECT_FALSE(settings.checksAutomatically());
    EXPECT_FALSE(settings.installsAutomatically());
    EXPECT_THAT(settings.lastChecked(), Eq(std::nullopt));
}

TEST_F(UpdateSettingsTest, ItReadsWhatTheFrameworkHolds) {
    framework.checks = true;
    framework.lastCheck = noon;
    settings.refresh();
    EXPECT_TRUE(settings.checksAutomatically());
    EXPECT_FALSE(settings.installsAutomatically());
    EXPECT_THAT(settings.lastChecked(), Optional(noon));

    framework.checks = false;
    framework.downloads = true;
    settings.refresh();
    EXPECT_FALSE(settings.checksAutomatically());
    EXPECT_TRUE(settings.installsAutomatically());
}

TEST_F(UpdateSettingsTest, WhatIsSetGoesToTheFrameworkAtOnce) {
    settings.setChecksAutomatically(true);
    EXPECT_TRUE(framework.checks);
    EXPECT_TRUE(settings.checksAutomatically());

    settings.setInstallsAutomatically(true);
    EXPECT_TRUE(framework.downloads);
    EXPECT_TRUE(settings.installsAutomatically());

    settings.setChecksAutomatically(false);
    EXPECT_FALSE(framework.checks);
}

TEST_F(UpdateSettingsTest, WhatTheFrameworkChangesByItselfIsOverwrittenByWhatIsSet) {
    settings.refresh();
    framework.checks = true;
    settings.setChecksAutomatically(false);

    EXPECT_FALSE(framework.checks);
}

TEST_F(UpdateSettingsTest, CheckingNowAsksTheFramework) {
    settings.checkNow();

    EXPECT_EQ(framework.checksAskedFor, 1);
}

TEST_F(UpdateSettingsTest, ItTellsOfChanges) {
    EXPECT_TRUE(tellsOf([this] { settings.setInstallsAutomatically(true); }));
    framework.lastCheck = noon;
    EXPECT_TRUE(tellsOf([this] { settings.refresh(); }));
}

TEST_F(UpdateSettingsTest, ReadAgainWithoutAChangeItTellsNoObserver) {
    framework.checks = true;
    framework.lastCheck = noon;
    settings.refresh();

    EXPECT_FALSE(tellsOf([this] { settings.refresh(); }));
}

TEST_F(UpdateSettingsTest, ItExplainsWhoIsAskedAndWhatComesOfIt) {
    EXPECT_EQ(
        settings.explanation(),
        "Once a day, Tarnwick asks updates.example whether a newer version exists. You are asked before an "
        "update is installed, unless you turn on automatic installs.");
}

} // namespace tarnwick
