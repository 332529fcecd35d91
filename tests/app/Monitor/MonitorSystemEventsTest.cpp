// How the monitor reacts to a new host or interval, restored defaults, sleep and wake, and path changes.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>

#include <functional>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr auto otherHost = "192.0.2.2";
constexpr auto defaultHost = "1.1.1.1";

class MonitorSystemEventsTest : public testing::Test, protected MonitorWorld {
protected:
    [[nodiscard]] bool hasSaved() const { return std::filesystem::exists(statsFile()); }

    [[nodiscard]] const StatCounter& session() const { return monitor->measured().ledger.session(); }

    /// Send times from now on, in seconds from now.
    std::vector<double> sendTimesWithin(double seconds) {
        const std::size_t before = network.sent().size();
        const double now = loop.now();
        pass(seconds);
        std::vector<double> times;
        for (std::size_t i = before; i < network.sent().size(); ++i) {
            times.push_back(network.sent()[i].at - now);
        }
        return times;
    }
};

// A new host.

struct HostText {
    std::string name;
    std::string text;

    friend void PrintTo(const HostText& param, std::ostream* out) { *out << param.name; }
};

class IgnoredHostTest : public MonitorSystemEventsTest, public testing::WithParamInterface<HostText> {};

TEST_P(IgnoredHostTest, ChangesNothingAndSavesNothing) {
    start();
    pass(5.5);
    defaults.forgetChanges();
    const Monitor::Samples samples = monitor->measured().samples;
    const PingLedger ledger = monitor->measured().ledger;

    monitor->setHostname(GetParam().text);

    EXPECT_FALSE(hasSaved());
    EXPECT_THAT(defaults.changes(), IsEmpty());
    EXPECT_EQ(monitor->prefs().hostname(), host);
    EXPECT_EQ(monitor->measured().samples, samples);
    EXPECT_EQ(monitor->measured().ledger, ledger);
    EXPECT_EQ(restarts(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorSystemEventsTest, IgnoredHostTest,
    testing::Values(
        HostText{"Nothing", ""}, HostText{"Spaces", "   "}, HostText{"OtherWhiteSpace", "\t\r\n "},
        HostText{"ThePresentHost", MonitorWorld::host}, HostText{"ItPaddedBySpaces", "  192.0.2.1 "},
        HostText{"ItPaddedByLineBreaks", "\n192.0.2.1\t"}),
    [](const auto& instance) { return instance.param.name; });

class HostChangeTest : public MonitorSystemEventsTest {
protected:
    HostChangeTest() {
        EXPECT_FALSE(store().save({{otherHost, otherFigures}}));
        start();
        pass(5.5);
    }

    const StatCounter otherFigures{
        .sent = 100, .replied = 90, .lost = 10, .averageMs = 20, .fastestMs = 10, .slowestMs = 50};
};

TEST_F(HostChangeTest, TrimsTheTextAndStoresIt) {
    monitor->setHostname(" \t192.0.2.2\r\n");

    EXPECT_EQ(monitor->prefs().hostname(), otherHost);
    EXPECT_EQ(defaults.stored(PreferenceKey::hostname), UserDefaults::Value(std::string(otherHost)));
}

TEST_F(HostChangeTest, SavesTheOldHostsFiguresBeforeTheSwitch) {
    monitor->setHostname(otherHost);

    EXPECT_THAT(
        store().load(),
        UnorderedElementsAre(
            Pair(host, StatCounter{6, 6, 0, usualDelay * 1000, usualDelay * 1000, usualDelay * 1000}),
            Pair(otherHost, otherFigures)));
}

TEST_F(HostChangeTest, EmptiesTheChartAndWhatIsPublished) {
    monitor->setHostname(otherHost);

    EXPECT_THAT(monitor->measured().samples, IsEmpty());
    EXPECT_EQ(monitor->reading().score, std::nullopt);
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
    EXPECT_FALSE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().resolvedAddress, std::nullopt);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
}

TEST_F(HostChangeTest, EmptiesTheSessionAndShowsTheNewHostsAllTimeFigures) {
    monitor->setHostname(otherHost);

    EXPECT_EQ(session(), StatCounter());
    EXPECT_EQ(monitor->measured().ledger.site(), otherFigures);
}

TEST_F(HostChangeTest, AHostWithoutFiguresStartsFromZero) {
    monitor->setHostname("192.0.2.3");

    EXPECT_EQ(monitor->measured().ledger.site(), StatCounter());
}

TEST_F(HostChangeTest, ComingBackShowsWhatWasCountedBefore) {
    monitor->setHostname(otherHost);
    pass(5.5);

    monitor->setHostname(host);

    EXPECT_EQ(monitor->measured().ledger.site().sent, 6);
    EXPECT_EQ(session().sent, 0);
}

TEST_F(HostChangeTest, PingsTheNewHostAtOnce) {
    monitor->setHostname(otherHost);

    EXPECT_THAT(sendTimesWithin(2), ElementsAre(0, 1, 2));
    EXPECT_EQ(network.sent().back().address, otherHost);
    EXPECT_EQ(monitor->reading().resolvedAddress, otherHost);
}

TEST_F(HostChangeTest, ClearsTheStartErrorOfTheOldHost) {
    setUnknownHost("nowhere.test");
    monitor->setHostname("nowhere.test");
    pass(1);
    ASSERT_NE(monitor->reading().startError, std::nullopt);
    network.setHangingHost("slow.test");

    monitor->setHostname("slow.test");

    EXPECT_EQ(monitor->reading().startError, std::nullopt);
}

TEST_F(HostChangeTest, PingsInFlightToTheOldHostAreNeitherLostNorAnswered) {
    answerAfter(3);
    pass(2.5);

    monitor->setHostname("192.0.2.3");
    pass(2.5);

    EXPECT_EQ(session(), (StatCounter{.sent = 3}));
    EXPECT_EQ(monitor->measured().ledger.site(), (StatCounter{.sent = 3}));
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
}

TEST_F(HostChangeTest, TheNewHostDoesNotShowTheOldOnesLoss) {
    fallSilent();
    pass(10);
    ASSERT_GT(monitor->reading().lossPercent, 0);

    answerAfter(usualDelay);
    monitor->setHostname(otherHost);
    pass(1.5);

    ASSERT_TRUE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
}

TEST_F(HostChangeTest, TheNewHostOwesNoAnnouncementOfTheOldOnesOutage) {
    prefs->setShowNotifications(true);
    fallSilent();
    pass(15);
    ASSERT_EQ(notifications.posted().size(), 1U);

    answerAfter(usualDelay);
    monitor->setHostname(otherHost);
    pass(5);

    ASSERT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_EQ(notifications.posted().size(), 1U);
}

TEST_F(HostChangeTest, ReadsTheSettingsForTheWatchdogAfresh) {
    prefs->setPingTimeout(20);
    fallSilent();

    monitor->setHostname("192.0.2.3");
    pass(24);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
    pass(1.5);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

// A new interval, a new time-out.

TEST_F(MonitorSystemEventsTest, ANewIntervalWithoutAPingTimerSendsNothing) {
    network.setHangingHost(host);
    start();

    prefs->setPingInterval(5);

    EXPECT_THAT(sendTimesWithin(9), IsEmpty());
}

TEST_F(MonitorSystemEventsTest, ANewIntervalGivesTheConnectionMoreTimeBeforeItIsDown) {
    start();
    pass(5.5);
    fallSilent();

    prefs->setPingInterval(20);
    pass(60);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    pass(10);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(MonitorSystemEventsTest, ANewTimeoutAloneReachesTheScorerButNotTheWatchdog) {
    start();
    pass(5.5);
    fallSilent();

    prefs->setPingTimeout(20);
    pass(10);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
    EXPECT_EQ(monitor->reading().lossPercent, 0);
}

TEST_F(MonitorSystemEventsTest, ANewTimeoutDecidesWhichRepliesCount) {
    answerAfter(1.5);
    start();
    prefs->setPingTimeout(1);

    pass(1.5);

    EXPECT_EQ(session().replied, 0);
    EXPECT_EQ(session().lost, 1);
}

// Restored defaults.

class RestoredDefaultsTest : public MonitorSystemEventsTest {
protected:
    void startOn(const std::string& name) {
        defaults.put(PreferenceKey::hostname, name);
        defaults.put(PreferenceKey::pingInterval, 10.0);
        start();
        pass(14.5);
    }
};

TEST_F(RestoredDefaultsTest, WithTheDefaultHostKeepTheSession) {
    startOn(defaultHost);

    monitor->restoreDefaults();

    EXPECT_EQ(session().sent, 2);
    EXPECT_EQ(monitor->measured().samples.size(), 2U);
    EXPECT_EQ(restarts(), 1);
}

TEST_F(RestoredDefaultsTest, WithTheDefaultHostPingAtTheDefaultInterval) {
    startOn(defaultHost);

    monitor->restoreDefaults();

    EXPECT_THAT(sendTimesWithin(2), ElementsAre(0, 1, 2));
}

TEST_F(RestoredDefaultsTest, SaveTheFiguresFirst) {
    startOn("192.0.2.7");

    monitor->restoreDefaults();

    EXPECT_THAT(
        store().load(), UnorderedElementsAre(Pair("192.0.2.7", testing::Field(&StatCounter::sent, 2))));
}

TEST_F(RestoredDefaultsTest, WithAnotherHostActLikeAHostChange) {
    startOn("192.0.2.7");

    monitor->restoreDefaults();
    pass(0);

    EXPECT_EQ(monitor->prefs().hostname(), defaultHost);
    EXPECT_EQ(network.sent().back().address, defaultHost);
    EXPECT_EQ(session().sent, 1);
    EXPECT_EQ(monitor->measured().samples.size(), 1U);
}

TEST_F(RestoredDefaultsTest, BringTheDefaultTimeoutToTheWatchdog) {
    defaults.put(PreferenceKey::pingTimeout, 30.0);
    startOn(defaultHost);
    fallSilent();

    monitor->restoreDefaults();
    pass(14);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

// Settings that were changed where they are stored.

class ReloadedPreferencesTest : public HostChangeTest {
protected:
    void store(const std::string& key, const UserDefaults::Value& value) {
        defaults.put(key, value);
        prefs->reload();
    }
};

TEST_F(ReloadedPreferencesTest, ANewHostIsPingedAtOnce) {
    store(PreferenceKey::hostname, std::string(otherHost));

    EXPECT_THAT(sendTimesWithin(2), ElementsAre(0, 1, 2));
    EXPECT_EQ(network.sent().back().address, otherHost);
}

TEST_F(ReloadedPreferencesTest, ANewHostEmptiesTheSessionAndShowsItsAllTimeFigures) {
    store(PreferenceKey::hostname, std::string(otherHost));

    EXPECT_THAT(monitor->measured().samples, IsEmpty());
    EXPECT_EQ(session(), StatCounter());
    EXPECT_EQ(monitor->measured().ledger.site(), otherFigures);
}

TEST_F(ReloadedPreferencesTest, TheOldHostsFiguresAreSavedUnderItsOwnName) {
    store(PreferenceKey::hostname, std::string(otherHost));

    EXPECT_THAT(
        MonitorWorld::store().load(),
        UnorderedElementsAre(
            Pair(host, StatCounter{6, 6, 0, usualDelay * 1000, usualDelay * 1000, usualDelay * 1000}),
            Pair(otherHost, otherFigures)));
}

TEST_F(ReloadedPreferencesTest, ANewIntervalKeepsTheGapSinceTheLastPing) {
    store(PreferenceKey::pingInterval, 3.0);

    EXPECT_THAT(sendTimesWithin(6), ElementsAre(2.5, 5.5));
}

TEST_F(ReloadedPreferencesTest, ANewIntervalKeepsTheSession) {
    store(PreferenceKey::pingInterval, 3.0);

    EXPECT_EQ(session().sent, 6);
    EXPECT_EQ(restarts(), 1);
}

TEST_F(ReloadedPreferencesTest, AnIntervalOutOfRangeIsCorrected) {
    store(PreferenceKey::pingInterval, 0.01);
    EXPECT_THAT(sendTimesWithin(1.75), ElementsAre(0.5, 1.5));

    store(PreferenceKey::pingInterval, 600.0);
    EXPECT_THAT(sendTimesWithin(60), ElementsAre(59.75));
}

TEST_F(ReloadedPreferencesTest, ANewHostAndIntervalTakeEffectTogether) {
    defaults.put(PreferenceKey::hostname, std::string(otherHost));
    store(PreferenceKey::pingInterval, 3.0);

    EXPECT_THAT(sendTimesWithin(6), ElementsAre(0, 3, 6));
}

TEST_F(ReloadedPreferencesTest, ANewHostAndTimeoutTakeEffectTogether) {
    fallSilent();
    defaults.put(PreferenceKey::pingTimeout, 20.0);
    store(PreferenceKey::hostname, std::string("192.0.2.3"));

    pass(24);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
    pass(1.5);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(ReloadedPreferencesTest, ABlankHostIsRefused) {
    store(PreferenceKey::hostname, std::string(" "));

    EXPECT_EQ(monitor->prefs().hostname(), host);
    EXPECT_EQ(restarts(), 1);
}

TEST_F(ReloadedPreferencesTest, OtherSettingsRestartNothing) {
    store(PreferenceKey::pingTimeout, 2.0);
    store(PreferenceKey::slowPingLowThreshold, 200.0);
    store(PreferenceKey::showNotifications, true);

    EXPECT_EQ(monitor->prefs().pingTimeout(), 2);
    EXPECT_EQ(restarts(), 1);
    EXPECT_EQ(session().sent, 6);
    EXPECT_THAT(sendTimesWithin(1), ElementsAre(0.5));
}

TEST_F(ReloadedPreferencesTest, EqualSettingsSaveNothing) {
    const auto before = MonitorWorld::store().load();

    prefs->reload();

    EXPECT_EQ(MonitorWorld::store().load(), before);
    EXPECT_EQ(restarts(), 1);
}

// Sleep and wake.

TEST_F(MonitorSystemEventsTest, AsleepItSendsNothingAndClosesItsSockets) {
    start();
    pass(5);

    sleep.goToSleep();

    EXPECT_EQ(network.openSockets(), 0U);
    EXPECT_THAT(sendTimesWithin(60), IsEmpty());
}

TEST_F(MonitorSystemEventsTest, BeforeItSleepsItsStatisticsAreOnDisk) {
    start();
    pass(5);

    sleep.goToSleep();

    EXPECT_EQ(store().load()[host].sent, 6);
}

TEST_F(MonitorSystemEventsTest, PingsInFlightAtSleepAreForgottenNeitherLostNorAnswered) {
    answerAfter(3);
    start();
    pass(2.5);

    sleep.goToSleep();
    pass(60);
    sleep.wake();
    pass(1.5);

    EXPECT_EQ(session(), (StatCounter{.sent = 3}));
    EXPECT_EQ(monitor->reading().latestPingMs, std::nullopt);
}

TEST_F(MonitorSystemEventsTest, SleepKeepsTheChartAndTheLatestPing) {
    start();
    pass(5.5);

    sleep.goToSleep();

    EXPECT_EQ(monitor->measured().samples.size(), 6U);
    EXPECT_EQ(monitor->reading().latestPingMs, usualDelay * 1000);
}

class WakeTest : public MonitorSystemEventsTest, public testing::WithParamInterface<double> {};

TEST_P(WakeTest, RestartsThePingerNoSoonerThanTwoSecondsLaterAndSoonAfterThat) {
    start();
    pass(5 + GetParam());
    sleep.goToSleep();
    pass(100);
    sleep.wake();

    const std::vector<double> times = sendTimesWithin(3);

    ASSERT_THAT(times, testing::Not(IsEmpty()));
    EXPECT_GE(times[0], 2);
    EXPECT_LE(times[0], 3);
    EXPECT_EQ(restarts(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorSystemEventsTest, WakeTest, testing::Values(0, 0.25, 0.75), [](const auto& instance) {
        return std::to_string(static_cast<int>(instance.param * 1000)) + "msAfterATick";
    });

/// A way to another host than the one that is pinged.
struct HostChange {
    std::string name;
    std::function<void(Monitor&, MemoryDefaults&)> apply;
    std::string newHost;

    friend void PrintTo(const HostChange& param, std::ostream* out) { *out << param.name; }
};

class SleepingHostChangeTest : public MonitorSystemEventsTest,
                               public testing::WithParamInterface<HostChange> {};

TEST_P(SleepingHostChangeTest, IsNotPingedBeforeTheWakeHasSettled) {
    start();
    pass(5);
    sleep.goToSleep();

    GetParam().apply(*monitor, defaults);
    EXPECT_THAT(sendTimesWithin(60), IsEmpty());
    sleep.wake();

    const std::vector<double> times = sendTimesWithin(3);
    ASSERT_THAT(times, testing::Not(IsEmpty()));
    EXPECT_GE(times[0], 2);
    EXPECT_EQ(network.sent().back().address, GetParam().newHost);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorSystemEventsTest, SleepingHostChangeTest,
    testing::Values(
        HostChange{
            "Entered", [](Monitor& monitor, MemoryDefaults&) { monitor.setHostname(otherHost); }, otherHost},
        HostChange{
            "SetInThePreferences",
            [](Monitor& monitor, MemoryDefaults&) { monitor.prefs().setHostname(otherHost); }, otherHost},
        HostChange{
            "RestoredDefault", [](Monitor& monitor, MemoryDefaults&) { monitor.restoreDefaults(); },
            defaultHost},
        HostChange{
            "ReadFromTheSettingsFile",
            [](Monitor& monitor, MemoryDefaults& defaults) {
                defaults.put(PreferenceKey::hostname, std::string(otherHost));
                monitor.prefs().reload();
            },
            otherHost}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(MonitorSystemEventsTest, WakingBeginsANewEpisode) {
    start();
    pass(5);
    fallSilent();
    pass(15);
    ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
    sleep.goToSleep();
    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);

    sleep.wake();

    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
}

TEST_F(MonitorSystemEventsTest, WakingReadsTheSettingsForTheWatchdogAfresh) {
    start();
    pass(5);
    prefs->setPingTimeout(20);
    fallSilent();
    sleep.goToSleep();

    sleep.wake();
    pass(26);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
    pass(2);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(MonitorSystemEventsTest, ADownAnnouncedBeforeASleepIsFollowedByItsEndAfterIt) {
    defaults.put(PreferenceKey::showNotifications, true);
    start();
    pass(5);
    fallSilent();
    pass(15);
    sleep.goToSleep();
    answerAfter(usualDelay);

    sleep.wake();
    pass(5);

    ASSERT_EQ(notifications.posted().size(), 2U);
    EXPECT_EQ(notifications.posted()[1].title, "Tarnwick — Connection restored");
}

// The network path.

class PathTest : public MonitorSystemEventsTest {
protected:
    PathTest() {
        start();
        path.report(true, {"eth0"});
        pass(5);
    }

    /// Restarts for the path since the start.
    [[nodiscard]] int reactions() const { return restarts() - 1; }
};

TEST_F(PathTest, TheFirstUpdateOnlyTellsHowThingsAre) {
    pass(10);

    EXPECT_EQ(reactions(), 0);
}

TEST_F(PathTest, AnUpdateLikeTheLastOneDoesNothing) {
    path.repeat();
    pass(10);

    EXPECT_EQ(reactions(), 0);
}

TEST_F(PathTest, AChangeRestartsThePingerOneSecondLater) {
    path.report(true, {"eth0", "tun0"});

    pass(0.96875);
    EXPECT_EQ(reactions(), 0);
    pass(0.03125);

    EXPECT_EQ(reactions(), 1);
}

TEST_F(PathTest, ABurstOfChangesLeadsToOneRestartOneSecondAfterTheLast) {
    path.report(true, {"wlan0"});
    pass(0.5);
    path.report(true, {"wlan0", "tun0"});

    pass(0.96875);
    EXPECT_EQ(reactions(), 0);
    pass(0.03125);
    EXPECT_EQ(reactions(), 1);
    pass(20);

    EXPECT_EQ(reactions(), 1);
}

TEST_F(PathTest, AChangeThatIsUndoneStillLeadsToOneRestart) {
    path.report(false, {});
    pass(0.5);
    path.report(true, {"eth0"});
    pass(20);

    EXPECT_EQ(reactions(), 1);
}

TEST_F(PathTest, AnUpdateLikeTheLastOneDoesNotPutTheReactionOff) {
    path.report(true, {"wlan0"});
    pass(0.5);
    path.repeat();

    pass(0.5);

    EXPECT_EQ(reactions(), 1);
}

struct Path {
    std::string name;
    bool satisfied;
    std::vector<std::string> interfaces;

    friend void PrintTo(const Path& param, std::ostream* out) { *out << param.name; }
};

class DifferentPathTest : public PathTest, public testing::WithParamInterface<Path> {};

TEST_P(DifferentPathTest, CountsAsAChange) {
    path.report(GetParam().satisfied, GetParam().interfaces);
    pass(1);

    EXPECT_EQ(reactions(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorSystemEventsTest, DifferentPathTest,
    testing::Values(
        Path{"OtherStatus", false, {"eth0"}}, Path{"OtherInterface", true, {"wlan0"}},
        Path{"OneMore", true, {"eth0", "wlan0"}}, Path{"NoInterface", true, {}}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(PathTest, TheOrderOfTheInterfacesCounts) {
    path.report(true, {"eth0", "wlan0"});
    pass(10);

    path.report(true, {"wlan0", "eth0"});
    pass(1);

    EXPECT_EQ(reactions(), 2);
}

TEST_F(PathTest, WhetherItIsSatisfiedIsPublishedAtOnce) {
    path.report(false, {});
    EXPECT_FALSE(monitor->reading().pathSatisfied);

    path.report(true, {"eth0"});
    EXPECT_TRUE(monitor->reading().pathSatisfied);
}

TEST_F(PathTest, ARestartComesNoSoonerThanTwoSecondsAfterTheLast) {
    path.report(true, {"wlan0"});
    pass(1);
    ASSERT_EQ(reactions(), 1);
    path.report(true, {"eth0"});

    pass(1.96875);
    EXPECT_EQ(reactions(), 1);
    pass(1);

    EXPECT_EQ(reactions(), 2);
}

TEST_F(PathTest, AChangeGivesAFailingStartTimeBeforeItCountsAsDown) {
    pass(20);
    setUnknownHost(host);

    path.report(true, {"wlan0"});
    pass(4);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::up);
    EXPECT_GE(reactions(), 2);
    pass(20);

    EXPECT_EQ(monitor->reading().status, Monitor::Status::down);
}

TEST_F(PathTest, AChangeDuringSleepIsNeverActedOn) {
    sleep.goToSleep();
    path.report(true, {"wlan0"});
    pass(10);
    sleep.wake();
    pass(10);

    EXPECT_EQ(restarts(), 2); // the start and the wake
}

TEST_F(PathTest, AChangeDuringSleepIsRecorded) {
    sleep.goToSleep();
    path.report(true, {"wlan0"});
    sleep.wake();
    pass(10);

    path.repeat();
    pass(10);

    EXPECT_EQ(restarts(), 2);
}

TEST_F(PathTest, WhetherItIsSatisfiedIsPublishedDuringSleepToo) {
    sleep.goToSleep();

    path.report(false, {});

    EXPECT_FALSE(monitor->reading().pathSatisfied);
}

TEST_F(PathTest, GoingToSleepCancelsAPendingReaction) {
    path.report(true, {"wlan0"});
    pass(0.5);

    sleep.goToSleep();
    sleep.wake();
    pass(1);
    EXPECT_EQ(restarts(), 1);
    pass(10);

    EXPECT_EQ(restarts(), 2);
}

} // namespace

} // namespace tarnwick::simulation
