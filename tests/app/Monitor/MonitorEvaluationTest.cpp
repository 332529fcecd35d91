// What the monitor makes of the watchdog's actions, the values that it derives for display, and when a
// published value counts as changed.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/ChangeCounter.h"
#include "tests/simulation/MonitorWorld.h"

#include <functional>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <string>
#include <vector>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Tone = Monitor::QualityTone;
using Notification = RecordingNotificationCenter::Notification;

const Notification connectionDown{"Tarnwick — Connection down", "Your internet connection seems to be down."};
const Notification connectionRestored{
    "Tarnwick — Connection restored", "Your internet connection has been restored."};

class MonitorEvaluationTest : public testing::Test, protected MonitorWorld {
protected:
    void startWithAlerts() {
        defaults.put(PreferenceKey::showNotifications, true);
        start();
    }

    /// Long enough to go down with the usual settings.
    void haveAnOutage() {
        fallSilent();
        pass(15);
        ASSERT_EQ(monitor->status(), Monitor::Status::down);
    }

    void recover() {
        answerAfter(usualDelay);
        pass(2);
        ASSERT_EQ(monitor->status(), Monitor::Status::up);
    }

    void startUnresolvableUntilDown() {
        setUnknownHost(host);
        start();
        pass(15);
        ASSERT_EQ(monitor->status(), Monitor::Status::down);
    }

    void startWithoutSocketsUntilDown() {
        network.setSocketError(AF_INET, "Permission denied");
        start();
        pass(15);
        ASSERT_EQ(monitor->status(), Monitor::Status::down);
    }
};

// Announcements.

TEST_F(MonitorEvaluationTest, AnnouncesAnOutageOnceAndItsEndOnce) {
    startWithAlerts();
    pass(5);

    haveAnOutage();
    pass(100);
    EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown));
    recover();
    pass(100);

    EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown, connectionRestored));
}

TEST_F(MonitorEvaluationTest, AnnouncesEveryOutageAnew) {
    startWithAlerts();
    pass(5);

    haveAnOutage();
    recover();
    haveAnOutage();
    recover();

    EXPECT_THAT(
        notifications.posted(),
        ElementsAre(connectionDown, connectionRestored, connectionDown, connectionRestored));
}

TEST_F(MonitorEvaluationTest, WithAlertsOffNothingIsAnnounced) {
    start();
    pass(5);

    haveAnOutage();
    recover();

    EXPECT_THAT(notifications.posted(), IsEmpty());
}

TEST_F(MonitorEvaluationTest, ADownIsAnnouncedOnlyAfterAFirstReply) {
    fallSilent();
    startWithAlerts();

    pass(60);
    recover();

    EXPECT_THAT(notifications.posted(), IsEmpty());
}

TEST_F(MonitorEvaluationTest, AlertsSwitchedOnTakeEffectAtTheNextStep) {
    start();
    pass(5);
    fallSilent();
    pass(2);

    prefs->setShowNotifications(true);
    pass(20);

    EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown));
}

TEST_F(MonitorEvaluationTest, AlertsSwitchedOnDuringAnOutageAnnounceNothingOfIt) {
    start();
    pass(5);
    haveAnOutage();

    prefs->setShowNotifications(true);
    pass(20);
    recover();

    EXPECT_THAT(notifications.posted(), IsEmpty());
}

TEST_F(MonitorEvaluationTest, AlertsSwitchedOffBeforeTheRecoveryKeepItSilentForGood) {
    startWithAlerts();
    pass(5);
    haveAnOutage();

    prefs->setShowNotifications(false);
    recover();
    prefs->setShowNotifications(true);
    pass(20);

    EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown));
}

/// What is published of an outage and its end, second by second, and how often observers were woken for it.
class OutageRecord {
public:
    struct Second {
        Monitor::Status status;
        StatCounter session;
        StatCounter site;
        std::size_t bookings;
        std::string summary;

        friend bool operator==(const Second&, const Second&) = default;
    };

    /// Starts the world.
    explicit OutageRecord(MonitorWorld& world) : world_(world) {
        world_.defaults.put(PreferenceKey::showNotifications, true);
        world_.start();
        const ChangeCounter<Monitor::Status> status([this] { return world_.monitor->status(); });
        const ChangeCounter<PingLedger> ledger([this] { return world_.monitor->ledger(); });
        const ChangeCounter<Monitor::Samples> samples([this] { return world_.monitor->samples(); });
        follow(5);
        world_.fallSilent();
        follow(100);
        world_.answerAfter(MonitorWorld::usualDelay);
        follow(20);
        wakeUps = {status.wakeUps(), ledger.wakeUps(), samples.wakeUps()};
    }

    std::vector<Second> seconds;
    std::vector<int> wakeUps;

private:
    void follow(int count) {
        for (int second = 0; second < count; ++second) {
            world_.pass(1);
            const Monitor& monitor = *world_.monitor;
            seconds.push_back(
                {.status = monitor.status(),
                 .session = monitor.ledger().session(),
                 .site = monitor.ledger().site(),
                 .bookings = monitor.ledger().bookings(),
                 .summary = monitor.accessibilitySummary()});
        }
    }

    MonitorWorld& world_;
};

TEST_F(MonitorEvaluationTest, NotificationsThatAreDroppedChangeNothingElse) {
    MonitorWorld silenced;
    silenced.notifications.answer = NotificationCenter::Ability::no;

    const OutageRecord shown(*this);
    const OutageRecord dropped(silenced);

    ASSERT_THAT(notifications.shown(), ElementsAre(connectionDown, connectionRestored));
    ASSERT_THAT(silenced.notifications.shown(), IsEmpty());
    EXPECT_EQ(silenced.notifications.posted(), notifications.posted());
    EXPECT_EQ(dropped.seconds, shown.seconds);
    EXPECT_EQ(dropped.wakeUps, shown.wakeUps);
    EXPECT_EQ(silenced.sendTimes(), sendTimes());
}

// A start that never ends.

TEST_F(MonitorEvaluationTest, ALookupIsGivenUpAfterTenSeconds) {
    network.setHangingHost(host);
    start();
    pass(9.5);
    ASSERT_EQ(monitor->startError(), std::nullopt);

    pass(0.5);

    EXPECT_EQ(monitor->startError(), PingError::resolution("lookup timed out"));
    EXPECT_EQ(monitor->lastError(), "Could not resolve host: lookup timed out");
}

TEST_F(MonitorEvaluationTest, ATimedOutStartLeavesNoPingerThatALateAnswerCouldStart) {
    setHost(host, {host}, 12);
    start();

    pass(17.5);

    EXPECT_THAT(sendTimes(), IsEmpty());
    EXPECT_EQ(monitor->startError(), PingError::resolution("lookup timed out"));
}

TEST_F(MonitorEvaluationTest, AfterATimedOutStartOnlyARestartBringsPingingBack) {
    network.setHangingHost(host);
    start();
    pass(10);
    setHost(host, {host});

    pass(7.5);
    EXPECT_THAT(sendTimes(), IsEmpty());
    pass(0.5);

    EXPECT_THAT(sendTimes(), ElementsAre(18));
}

TEST_F(MonitorEvaluationTest, ATimedOutRestartEndsThePingTimerOfTheRunBefore) {
    start();
    pass(5);
    fallSilent();
    network.setHangingHost(host);
    pass(60);
    const std::size_t sent = network.sent().size();

    pass(60);

    EXPECT_EQ(network.sent().size(), sent);
}

TEST_F(MonitorEvaluationTest, TheLastErrorIsTheMessageOfTheStartError) {
    startWithoutSocketsUntilDown();

    EXPECT_EQ(monitor->lastError(), "Could not open ICMP socket: Permission denied");
}

TEST_F(MonitorEvaluationTest, AStartThatSucceedsClearsTheStartError) {
    startUnresolvableUntilDown();
    ASSERT_EQ(monitor->startError(), PingError::resolution("Name or service not known"));
    setHost(host, {host});

    pass(20);

    EXPECT_EQ(monitor->startError(), std::nullopt);
    EXPECT_EQ(monitor->resolvedAddress(), host);
}

// Why the connection is down.

TEST_F(MonitorEvaluationTest, ThereIsNoReasonUnlessDown) {
    setUnknownHost(host);
    path.report(false);

    start();
    pass(5);

    ASSERT_EQ(monitor->status(), Monitor::Status::starting);
    EXPECT_EQ(monitor->downReason(), std::nullopt);
}

TEST_F(MonitorEvaluationTest, SilenceIsTheReasonWhenNothingElseIsWrong) {
    start();
    haveAnOutage();

    EXPECT_EQ(monitor->downReason(), (DownReason{DownReason::Kind::noReplies}));
    EXPECT_EQ(monitor->downReasonText(), "No replies for 8 s");
}

TEST_F(MonitorEvaluationTest, AnUnresolvableHostIsTheReasonWithItsNameInTypographicQuotes) {
    startUnresolvableUntilDown();

    EXPECT_EQ(monitor->downReason(), (DownReason{DownReason::Kind::hostNotFound}));
    EXPECT_EQ(monitor->downReasonText(), "Can’t find host “192.0.2.1”");
}

TEST_F(MonitorEvaluationTest, ATimedOutLookupCountsAsAHostThatIsNotFound) {
    network.setHangingHost(host);
    start();
    pass(15);

    EXPECT_EQ(monitor->downReason(), (DownReason{DownReason::Kind::hostNotFound}));
}

TEST_F(MonitorEvaluationTest, ASocketErrorIsTheReasonWithoutItsOwnWordsInTheText) {
    startWithoutSocketsUntilDown();

    EXPECT_EQ(monitor->downReason(), (DownReason{DownReason::Kind::socketError, "Permission denied"}));
    EXPECT_EQ(monitor->downReasonText(), "Can’t open a ping socket");
}

TEST_F(MonitorEvaluationTest, AMissingPathExplainsMoreThanAStartError) {
    startWithoutSocketsUntilDown();

    path.report(false);

    EXPECT_EQ(monitor->downReason(), (DownReason{DownReason::Kind::noNetwork}));
    EXPECT_EQ(monitor->downReasonText(), "No network connection");
}

TEST_F(MonitorEvaluationTest, WithoutAReasonTheTextSpeaksOfMissingReplies) {
    start();
    pass(5);

    ASSERT_EQ(monitor->downReason(), std::nullopt);
    EXPECT_EQ(monitor->downReasonText(), "No replies for 8 s");
}

struct ReplyTimeout {
    std::string name;
    double timeout;
    double interval;
    std::string text;

    friend void PrintTo(const ReplyTimeout& param, std::ostream* out) { *out << param.name; }
};

class ReplyTimeoutTextTest : public MonitorEvaluationTest,
                             public testing::WithParamInterface<ReplyTimeout> {};

TEST_P(ReplyTimeoutTextTest, ShowsTheWholeSecondsOfTheReplyTimeout) {
    defaults.put(PreferenceKey::pingTimeout, GetParam().timeout);
    defaults.put(PreferenceKey::pingInterval, GetParam().interval);
    create();

    EXPECT_EQ(monitor->downReasonText(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorEvaluationTest, ReplyTimeoutTextTest,
    testing::Values(
        ReplyTimeout{"TheDefaults", 4, 1, "No replies for 8 s"},
        ReplyTimeout{"AFraction", 2.75, 1, "No replies for 6 s"},
        ReplyTimeout{"ALongInterval", 4, 20, "No replies for 64 s"},
        ReplyTimeout{"TheLongestInterval", 4, 60, "No replies for 124 s"}),
    [](const auto& instance) { return instance.param.name; });

// Texts for display, by what is known.

struct Display {
    std::string name;
    std::function<void(MonitorWorld&)> arrange;
    std::string menuTitle; ///< with the loss shown
    std::string tooltip;
    std::string qualityTitle;
    Tone tone;
    int bars;
    bool showsLoss;
    std::string summary;

    friend void PrintTo(const Display& param, std::ostream* out) { *out << param.name; }
};

class DisplayTest : public testing::Test, public testing::WithParamInterface<Display> {
protected:
    DisplayTest() { GetParam().arrange(world); }

    MonitorWorld world;
};

TEST_P(DisplayTest, MenuTitle) {
    EXPECT_EQ(world.monitor->menuTitle(true), GetParam().menuTitle);
}

TEST_P(DisplayTest, Tooltip) {
    EXPECT_EQ(world.monitor->tooltip(), GetParam().tooltip);
}

TEST_P(DisplayTest, QualityTitle) {
    EXPECT_EQ(world.monitor->qualityTitle(), GetParam().qualityTitle);
}

TEST_P(DisplayTest, QualityTone) {
    EXPECT_EQ(world.monitor->qualityTone(), GetParam().tone);
}

TEST_P(DisplayTest, Bars) {
    EXPECT_EQ(world.monitor->bars(), GetParam().bars);
}

TEST_P(DisplayTest, ShowsLoss) {
    EXPECT_EQ(world.monitor->showsLoss(), GetParam().showsLoss);
}

TEST_P(DisplayTest, AccessibilitySummary) {
    EXPECT_EQ(world.monitor->accessibilitySummary(), GetParam().summary);
}

std::string tooltipOf(const std::string& latency, const std::string& loss) {
    return "Latest Ping Time: " + latency + "\nRecent Packet Loss: " + loss;
}

/// Up for a while, every answer after this delay.
std::function<void(MonitorWorld&)> steady(double delay) {
    return [delay](MonitorWorld& world) {
        world.answerAfter(delay);
        world.start();
        world.pass(10.96875);
    };
}

void silentFromTheStart(MonitorWorld& world, double seconds) {
    world.fallSilent();
    world.start();
    world.pass(seconds);
}

void sleepAndWake(MonitorWorld& world, double secondsAfterWake) {
    steady(MonitorWorld::usualDelay)(world);
    world.sleep.goToSleep();
    world.sleep.wake();
    world.pass(secondsAfterWake);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorEvaluationTest, DisplayTest,
    testing::Values(
        Display{
            "BeforeTheStart", [](MonitorWorld& world) { world.create(); }, "…", tooltipOf("–", "–"),
            "Connecting…", Tone::neutral, 0, false, "Connecting"},
        Display{
            "FirstPingOutstanding",
            [](MonitorWorld& world) {
                world.setHost(MonitorWorld::host, {MonitorWorld::host}, 0.5);
                silentFromTheStart(world, 1);
            },
            "…", tooltipOf("–", "0%"), "Connecting…", Tone::neutral, 0, false, "Connecting"},
        Display{
            "FirstPingOverdue", [](MonitorWorld& world) { silentFromTheStart(world, 2); }, "…",
            tooltipOf("–", "0%"), "Very poor", Tone::bad, 1, true, "Connecting"},
        Display{
            "FirstReplyBeforeTheFirstTick",
            [](MonitorWorld& world) {
                world.start();
                world.pass(0.5);
            },
            "31ms", tooltipOf("31ms", "–"), "Very poor", Tone::bad, 0, false, "Very poor, 31 milliseconds"},
        Display{
            "Excellent", steady(0.03125), "31ms (0%)", tooltipOf("31ms", "0%"), "Excellent", Tone::good, 5,
            true, "Excellent, 31 milliseconds, 0 percent packet loss"},
        Display{
            "Good", steady(0.375), "0.4s (0%)", tooltipOf("375ms", "0%"), "Good", Tone::good, 4, true,
            "Good, 375 milliseconds, 0 percent packet loss"},
        Display{
            "Fair", steady(0.5625), "0.6s (0%)", tooltipOf("563ms", "0%"), "Fair", Tone::middle, 3, true,
            "Fair, 563 milliseconds, 0 percent packet loss"},
        Display{
            "Poor", steady(0.75), "0.8s (0%)", tooltipOf("750ms", "0%"), "Poor", Tone::middle, 2, true,
            "Poor, 750 milliseconds, 0 percent packet loss"},
        Display{
            "VeryPoor", steady(0.9375), "0.9s (0%)", tooltipOf("938ms", "0%"), "Very poor", Tone::bad, 1,
            true, "Very poor, 938 milliseconds, 0 percent packet loss"},
        Display{
            "DownWithoutAnyReply", [](MonitorWorld& world) { silentFromTheStart(world, 9); }, "Failed",
            tooltipOf("–", "56%"), "Connection down", Tone::bad, 0, true,
            "Connection down, No replies for 8 s"},
        Display{
            "DownBeforeAnyPing",
            [](MonitorWorld& world) {
                world.setUnknownHost(MonitorWorld::host);
                world.start();
                world.pass(15);
            },
            "Failed", tooltipOf("–", "–"), "Connection down", Tone::bad, 0, false,
            "Connection down, Can’t find host “192.0.2.1”"},
        Display{
            "JustAwake", [](MonitorWorld& world) { sleepAndWake(world, 0); }, "31ms (0%)",
            tooltipOf("31ms", "0%"), "Excellent", Tone::good, 5, true,
            "Excellent, 31 milliseconds, 0 percent packet loss"},
        Display{
            "AwakeWithAnEmptyWindow", [](MonitorWorld& world) { sleepAndWake(world, 1); }, "31ms",
            tooltipOf("31ms", "–"), "Excellent", Tone::good, 5, false, "Excellent, 31 milliseconds"}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(MonitorEvaluationTest, TheMenuTitleOmitsTheLossWhenAskedTo) {
    start();
    pass(5.5);

    EXPECT_EQ(monitor->menuTitle(false), "31ms");
}

TEST_F(MonitorEvaluationTest, DownKeepsTheScoreButLightsNoBar) {
    start();
    pass(5);
    haveAnOutage();

    EXPECT_NE(monitor->score(), std::nullopt);
    EXPECT_EQ(monitor->bars(), 0);
}

TEST_F(MonitorEvaluationTest, TheTooltipRoundsHalvesAwayFromZero) {
    network.setBehavior([isFirst = true](const SentRequest&) mutable {
        return Answer{.delay = 0.0234, .copies = std::exchange(isFirst, false) ? 0 : 1};
    });
    create();
    prefs->setPingInterval(0.75);
    startedAt = loop.now();
    monitor->start();

    pass(30.5); // one of 40 pings is lost

    EXPECT_EQ(monitor->status(), Monitor::Status::up);
    EXPECT_DOUBLE_EQ(monitor->lossPercent(), 2.5);
    EXPECT_EQ(monitor->tooltip(), tooltipOf("23ms", "3%"));
}

// Change suppression.

class ChangeSuppressionTest : public MonitorEvaluationTest {
protected:
    /// How often observers of a value are woken in a minute.
    template<class Read>
    int wakeUpsInAMinute(Read read) {
        using Value = std::decay_t<std::invoke_result_t<Read, const Monitor&>>;
        const ChangeCounter<Value> counter([this, read] { return read(*monitor); });
        pass(60);
        return counter.wakeUps();
    }
};

TEST_F(ChangeSuppressionTest, ASteadyConnectionCostsObserversNothing) {
    start();
    pass(60.5);

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.status(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.score(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.latestPingMs(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.lossPercent(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.lossIsKnown(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.resolvedAddress(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.lastError(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.pathSatisfied(); }), 0);
    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.recording(); }), 0);
}

TEST_F(ChangeSuppressionTest, SamplesChangeWithEachPingAndEachReply) {
    start();
    pass(60.5);

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.samples(); }), 120);
}

TEST_F(ChangeSuppressionTest, TheLedgerChangesWithEachPingAndEachReply) {
    start();
    pass(60.5);

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.ledger(); }), 120);
}

TEST_F(ChangeSuppressionTest, AStartErrorThatComesBackUnchangedWakesNobody) {
    setUnknownHost(host);
    start();
    ASSERT_NE(monitor->startError(), std::nullopt);

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.startError(); }), 0);
    EXPECT_GT(restarts(), 2);
}

TEST_F(ChangeSuppressionTest, AStartErrorWithAnotherMessageWakesObservers) {
    setUnknownHost(host, "Temporary failure in name resolution");
    start();
    setUnknownHost(host, "Name or service not known");

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.startError(); }), 1);
}

TEST_F(ChangeSuppressionTest, AStartErrorOfAnotherKindWithTheSameMessageWakesObservers) {
    setUnknownHost(host, "Permission denied");
    start();
    network.setSocketError(AF_INET, "Permission denied");
    setHost(host, {host});

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.startError(); }), 1);
}

TEST_F(ChangeSuppressionTest, AChangeOfStatusWakesItsObserversOnce) {
    start();
    pass(5);
    fallSilent();

    EXPECT_EQ(wakeUpsInAMinute([](const Monitor& m) { return m.status(); }), 1);
}

TEST_F(ChangeSuppressionTest, ARestartOnTheSameAddressWakesNoObserverOfIt) {
    start();
    pass(5);
    const ChangeCounter<std::optional<std::string>> counter([this] { return monitor->resolvedAddress(); });

    sleep.goToSleep();
    sleep.wake();
    pass(10);

    EXPECT_EQ(counter.wakeUps(), 0);
    EXPECT_EQ(restarts(), 2);
}

} // namespace

} // namespace tarnwick::simulation
