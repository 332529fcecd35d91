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
        ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
    }

    void recover() {
        answerAfter(usualDelay);
        pass(2);
        ASSERT_EQ(monitor->reading().status, Monitor::Status::up);
    }

    void startUnresolvableUntilDown() {
        setUnknownHost(host);
        start();
        pass(15);
        ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
    }

    void startWithoutSocketsUntilDown() {
        network.setSocketError(AF_INET, "Permission denied");
        start();
        pass(15);
        ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
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
        const ChangeCounter<Monitor::Status> status([this] { return world_.monitor->reading().status; });
        const ChangeCounter<PingLedger> ledger([this] { return world_.monitor->measured().ledger; });
        const ChangeCounter<Monitor::Samples> samples([this] { return world_.monitor->measured().samples; });
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
                {.status = monitor.reading().status,
                 .session = monitor.measured().ledger.session(),
                 .site = monitor.measured().ledger.site(),
                 .bookings = monitor.measured().ledger.bookings(),
                 .summary = monitor.reading().accessibilitySummary});
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

TEST_F(MonitorEvaluationTest, ATickAsksTheWatchdogBeforeItJudgesTheWindow) {
    startWithAlerts();
    pass(5);
    fallSilent();
    std::optional<double> judgedBefore;
    notifications.onPost = [&] { judgedBefore = loop.now() - monitor->measured().evaluatedAt; };

    pass(15);

    EXPECT_EQ(judgedBefore, 1);
}

// A start that never ends.

TEST_F(MonitorEvaluationTest, ALookupIsGivenUpAfterTenSeconds) {
    network.setHangingHost(host);
    start();
    pass(9.5);
    ASSERT_EQ(monitor->reading().startError, std::nullopt);

    pass(0.5);

    EXPECT_EQ(monitor->reading().startError, PingError::resolution("lookup timed out"));
    EXPECT_EQ(monitor->reading().lastError, "Could not resolve host: lookup timed out");
}

TEST_F(MonitorEvaluationTest, ATimedOutStartLeavesNoPingerThatALateAnswerCouldStart) {
    setHost(host, {host}, 12);
    start();

    pass(17.5);

    EXPECT_THAT(sendTimes(), IsEmpty());
    EXPECT_EQ(monitor->reading().startError, PingError::resolution("lookup timed out"));
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
    pass(5.5);
    ASSERT_EQ(loop.timerCount(), 2U); // that of the tick, too
    fallSilent();
    network.setHangingHost(host);

    pass(60);

    ASSERT_EQ(monitor->reading().startError, PingError::resolution("lookup timed out"));
    EXPECT_EQ(loop.timerCount(), 1U);
}

TEST_F(MonitorEvaluationTest, TheLastErrorIsTheMessageOfTheStartError) {
    startWithoutSocketsUntilDown();

    EXPECT_EQ(monitor->reading().lastError, "Could not open ICMP socket: Permission denied");
}

TEST_F(MonitorEvaluationTest, AStartThatSucceedsClearsTheStartError) {
    startUnresolvableUntilDown();
    ASSERT_EQ(monitor->reading().startError, PingError::resolution("Name or service not known"));
    setHost(host, {host});

    pass(20);

    EXPECT_EQ(monitor->reading().startError, std::nullopt);
    EXPECT_EQ(monitor->reading().resolvedAddress, host);
}

// Why the connection is down.

TEST_F(MonitorEvaluationTest, ThereIsNoReasonUnlessDown) {
    setUnknownHost(host);
    path.report(false);

    start();
    pass(5);

    ASSERT_EQ(monitor->reading().status, Monitor::Status::starting);
    EXPECT_EQ(monitor->reading().downReason, std::nullopt);
}

TEST_F(MonitorEvaluationTest, SilenceIsTheReasonWhenNothingElseIsWrong) {
    start();
    haveAnOutage();

    EXPECT_EQ(monitor->reading().downReason, (DownReason{DownReason::Kind::noReplies}));
    EXPECT_EQ(monitor->reading().downReasonText, "No replies for 8 s");
}

TEST_F(MonitorEvaluationTest, AnUnresolvableHostIsTheReasonWithItsNameInTypographicQuotes) {
    startUnresolvableUntilDown();

    EXPECT_EQ(monitor->reading().downReason, (DownReason{DownReason::Kind::hostNotFound}));
    EXPECT_EQ(monitor->reading().downReasonText, "Can’t find host “192.0.2.1”");
}

TEST_F(MonitorEvaluationTest, ATimedOutLookupCountsAsAHostThatIsNotFound) {
    network.setHangingHost(host);
    start();
    pass(15);

    EXPECT_EQ(monitor->reading().downReason, (DownReason{DownReason::Kind::hostNotFound}));
}

TEST_F(MonitorEvaluationTest, ASocketErrorIsTheReasonWithoutItsOwnWordsInTheText) {
    startWithoutSocketsUntilDown();

    EXPECT_EQ(
        monitor->reading().downReason, (DownReason{DownReason::Kind::socketError, "Permission denied"}));
    EXPECT_EQ(monitor->reading().downReasonText, "Can’t open a ping socket");
}

TEST_F(MonitorEvaluationTest, AMissingPathExplainsMoreThanAStartError) {
    startWithoutSocketsUntilDown();

    path.report(false);

    EXPECT_EQ(monitor->reading().downReason, (DownReason{DownReason::Kind::noNetwork}));
    EXPECT_EQ(monitor->reading().downReasonText, "No network connection");
}

// What is published.

TEST_F(MonitorEvaluationTest, DownKeepsTheScoreButLightsNoBar) {
    start();
    pass(5);
    haveAnOutage();

    EXPECT_NE(monitor->reading().score, std::nullopt);
    EXPECT_EQ(monitor->reading().bars, 0);
}

TEST_F(MonitorEvaluationTest, TheReadingIsThatOfTheLatestEvent) {
    start();
    EXPECT_EQ(monitor->reading().session.sent, 1);
    EXPECT_EQ(monitor->reading().latencyText, "–");

    pass(0.5);
    EXPECT_EQ(monitor->reading().latencyText, "31 ms");
    EXPECT_FALSE(monitor->reading().lossIsKnown);

    pass(0.5);
    EXPECT_TRUE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().qualityTitle, "Excellent");
}

TEST_F(MonitorEvaluationTest, TheTickIsPublishedBeforeTheFrontEndIsTold) {
    start();
    fallSilent();
    std::vector<int> lost;
    monitor->onTick = [&] { lost.push_back(static_cast<int>(monitor->reading().session.lost)); };

    pass(7);

    EXPECT_THAT(lost, ElementsAre(0, 0, 0, 0, 0, 1, 2));
}

TEST_F(MonitorEvaluationTest, AChangedSettingChangesTheReading) {
    start();
    pass(5.5);

    prefs->setSlowPingThresholdMs(250);
    prefs->setLossTextMode(MenuBarTitle::LossMode::always);
    loop.runPending();

    EXPECT_EQ(monitor->reading().chart.lowThresholdMs, 250);
    EXPECT_EQ(monitor->reading().chart.highThresholdMs, 1150);
    EXPECT_EQ(monitor->reading().lossTextMode, MenuBarTitle::LossMode::always);
}

// Change suppression.

class ChangeSuppressionTest : public MonitorEvaluationTest {
protected:
    /// How often observers of the reading are woken within this time.
    int wakeUpsIn(double seconds) {
        const ChangeCounter<Reading> counter([this] { return monitor->reading(); });
        pass(seconds);
        return counter.wakeUps();
    }
};

TEST_F(ChangeSuppressionTest, EachPingAndEachReplyWakesObserversOnceAndATickWithoutNewsNever) {
    setHost(host, {host}, 0.5); // pings at half seconds, ticks at whole ones
    start();
    passUntil(60.25);
    int atPings = 0;
    int atReplies = 0;
    int atTicks = 0;

    for (int second = 0; second < 60; ++second) {
        atPings += wakeUpsIn(0.26);
        atReplies += wakeUpsIn(0.24);
        atTicks += wakeUpsIn(0.5);
    }

    EXPECT_EQ(atPings, 60);
    EXPECT_EQ(atReplies, 60);
    // The chart moves on by a bucket every eight and a third seconds.
    EXPECT_LE(atTicks, 8);
}

TEST_F(ChangeSuppressionTest, AStartErrorThatComesBackUnchangedWakesNobody) {
    setUnknownHost(host);
    start();
    ASSERT_NE(monitor->reading().startError, std::nullopt);
    pass(15);
    ASSERT_EQ(monitor->reading().status, Monitor::Status::down);
    const int before = restarts();

    EXPECT_LE(wakeUpsIn(60), 8); // for the buckets of the chart
    EXPECT_GT(restarts(), before);
}

TEST_F(ChangeSuppressionTest, AStartErrorWithAnotherMessageOrOfAnotherKindWakesObservers) {
    EXPECT_NE(
        (Reading{.startError = PingError::resolution("one")}),
        (Reading{.startError = PingError::resolution("two")}));
    EXPECT_NE(
        (Reading{.startError = PingError::resolution("one")}),
        (Reading{.startError = PingError::socket("one")}));
}

} // namespace

} // namespace tarnwick::simulation
