// What the settings window shows and changes.
#include "app/SettingsView/Model/SettingsModel.h"

#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/simulation/FakeSoftwareUpdates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::Eq;
using testing::IsEmpty;

class SettingsModelTest : public testing::Test, protected WatchedMonitor {
protected:
    simulation::FakeLoginItem loginItem;
    SettingsModel model{monitor, notifications, loginItem};
};

} // namespace

TEST_F(SettingsModelTest, AHostThatIsAnAddressIsItsOwnAddressLine) {
    watchFor(1);

    EXPECT_THAT(model.addressLine(), Eq("1.1.1.1"));
}

TEST_F(SettingsModelTest, AHostsNameIsFollowedByItsAddress) {
    resolve("one.example", "192.0.2.1");
    model.commitHost("one.example");
    watchFor(1);

    EXPECT_THAT(model.addressLine(), Eq("192.0.2.1"));
}

TEST_F(SettingsModelTest, WhileAHostIsLookedUpItIsResolving) {
    network.setHost("one.example", std::vector{simulation::VirtualNetwork::address("192.0.2.1")}, 5);
    model.commitHost("one.example");
    watchFor(1);

    EXPECT_THAT(model.addressLine(), Eq("Resolving…"));
}

TEST_F(SettingsModelTest, BeforeTheDownAHostThatIsNotFoundIsStillResolving) {
    network.setHost("nowhere.example", PingError::resolution("No such host"));
    model.commitHost("nowhere.example");
    watchFor(1);
    ASSERT_TRUE(monitor.reading().startError);

    EXPECT_THAT(model.addressLine(), Eq("Resolving…"));
}

TEST_F(SettingsModelTest, OnceDownForAnErrorTheAddressLineTellsTheReason) {
    network.setHost("nowhere.example", PingError::resolution("No such host"));
    model.commitHost("nowhere.example");
    monitor.start();
    ASSERT_TRUE(waitUntilDown());

    EXPECT_THAT(model.addressLine(), Eq("Can’t find host “nowhere.example”"));
}

TEST_F(SettingsModelTest, AHostThatIsSetInAPauseIsNotResolved) {
    watchFor(1);
    monitor.pause(60);
    EXPECT_THAT(model.addressLine(), Eq("1.1.1.1"));
    model.commitHost("one.example");

    EXPECT_THAT(model.addressLine(), testing::StartsWith("Paused until "));
}

TEST_F(SettingsModelTest, PingsLeaveTheReadersOfTheAddressLineAlone) {
    resolve("one.example", "192.0.2.1");
    model.commitHost("one.example");
    watchFor(1);
    int runs = 0;
    const RenderLoop reader(loop, [&] {
        static_cast<void>(model.addressLine());
        ++runs;
    });
    const std::int64_t pings = monitor.reading().session.sent;

    loop.advance(60);
    ASSERT_EQ(monitor.reading().session.sent, pings + 60);
    EXPECT_EQ(runs, 1);
    model.commitHost("2.2.2.2");
    loop.advance(1);

    EXPECT_GT(runs, 1);
    EXPECT_THAT(model.addressLine(), Eq("2.2.2.2"));
}

TEST_F(SettingsModelTest, AHostIsKeptWithoutTheWhiteSpaceAroundIt) {
    resolve("one.example", "192.0.2.1");
    model.commitHost("  one.example\n");

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(SettingsModelTest, WithoutAHostThePresentOneStays) {
    model.commitHost("   ");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(SettingsModelTest, ANewIntervalHoldsForTheNextPing) {
    watchFor(10.5);
    model.setPingInterval(5);
    const std::int64_t before = monitor.reading().session.sent;
    loop.advance(20);

    EXPECT_EQ(monitor.reading().session.sent - before, 4);
}

TEST_F(SettingsModelTest, AnUnchangedIntervalIsNotEvenStored) {
    model.setPingInterval(1);

    EXPECT_THAT(defaults.changes(), IsEmpty());
}

TEST_F(SettingsModelTest, TurningAlertsOnAsksForWhatTheyNeed) {
    model.setShowNotifications(true);

    EXPECT_TRUE(prefs.showNotifications());
    EXPECT_EQ(notifications.requests(), 1);
}

TEST_F(SettingsModelTest, TurningAlertsOffAsksNothing) {
    prefs.setShowNotifications(true);
    model.setShowNotifications(false);

    EXPECT_FALSE(prefs.showNotifications());
    EXPECT_EQ(notifications.requests(), 0);
}

TEST_F(SettingsModelTest, PickersWriteTheirPreferencesAtOnce) {
    model.setDisplay(Preferences::Display::textOnly);
    model.setLossTextMode(MenuBarTitle::LossMode::always);
    model.setSlowPingThresholdMs(250);

    EXPECT_THAT(defaults.stored(PreferenceKey::showIcon), Eq(UserDefaults::Value(false)));
    EXPECT_THAT(defaults.stored(PreferenceKey::packetLossTextMode), Eq(UserDefaults::Value("always")));
    EXPECT_THAT(defaults.stored(PreferenceKey::slowPingLowThreshold), Eq(UserDefaults::Value(250.0)));
}

TEST_F(SettingsModelTest, RestoringDefaultsBringsThemAllBack) {
    resolve("one.example", "192.0.2.1");
    model.commitHost("one.example");
    model.setPingInterval(30);
    model.setSlowPingThresholdMs(250);
    model.setShowNotifications(true);
    model.restoreDefaults();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(prefs.pingInterval(), 1);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
    EXPECT_FALSE(prefs.showNotifications());
}

TEST_F(SettingsModelTest, WithoutAnUpdateFrameworkThereIsNothingAboutUpdates) {
    EXPECT_EQ(model.updates(), nullptr);
}

TEST_F(SettingsModelTest, RefreshingReadsWhatChangesElsewhere) {
    simulation::FakeSoftwareUpdates updates;
    SettingsModel updated(monitor, notifications, loginItem, &updates);
    updates.checks.set(true);
    loginItem.now = LoginItem::Status::enabled;
    updated.refresh();

    ASSERT_NE(updated.updates(), nullptr);
    EXPECT_TRUE(updated.updates()->checksAutomatically());
    EXPECT_TRUE(updated.launchAtLogin().isOn());
}

} // namespace tarnwick
