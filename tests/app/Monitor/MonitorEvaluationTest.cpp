// When the monitor publishes a reading, and what counts as a change of it.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/ChangeCounter.h"
#include "tests/simulation/MonitorWorld.h"

#include <gmock/gmock.h>
#include <optional>
#include <vector>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MonitorEvaluationTest : public testing::Test, protected MonitorWorld {};

/// What is published of an outage and its end, second by second, and how often observers were woken for it.
struct OutageRecord {
    /// Starts the world.
    explicit OutageRecord(MonitorWorld& world) {
        world.defaults.put(PreferenceKey::showNotifications, true);
        world.start();
        const ChangeCounter<Reading> counter([&] { return world.monitor->reading(); });
        follow(world, 5);
        world.fallSilent();
        follow(world, 100);
        world.answerAfter(MonitorWorld::usualDelay);
        follow(world, 20);
        wakeUps = counter.wakeUps();
    }

    void follow(MonitorWorld& world, int seconds) {
        for (int second = 0; second < seconds; ++second) {
            world.pass(1);
            readings.push_back(world.monitor->reading());
        }
    }

    std::vector<Reading> readings;
    int wakeUps = 0;
};

TEST_F(MonitorEvaluationTest, NotificationsThatAreDroppedChangeNothingElse) {
    MonitorWorld silenced;
    silenced.notifications.answer = NotificationCenter::Ability::no;

    const OutageRecord shown(*this);
    const OutageRecord dropped(silenced);

    ASSERT_EQ(notifications.shown().size(), 2U);
    ASSERT_THAT(silenced.notifications.shown(), IsEmpty());
    EXPECT_EQ(silenced.notifications.posted(), notifications.posted());
    EXPECT_TRUE(dropped.readings == shown.readings);
    EXPECT_EQ(dropped.wakeUps, shown.wakeUps);
    EXPECT_EQ(silenced.sendTimes(), sendTimes());
}

TEST_F(MonitorEvaluationTest, TheNotificationOfAnOutageNamesItsReason) {
    defaults.put(PreferenceKey::showNotifications, true);
    const auto latest = [this] { return notifications.posted().back().body; };
    start();
    pass(5);
    fallSilent();
    pass(15);
    ASSERT_EQ(notifications.posted().size(), 1U);
    EXPECT_EQ(latest(), "Your internet connection seems to be down. No replies for 8 s.");

    answerAfter(0.02);
    pass(5);
    ASSERT_EQ(notifications.posted().size(), 2U);
    EXPECT_EQ(latest(), "Your internet connection has been restored.");

    fallSilent();
    pass(2);
    path.report(false);
    pass(15);
    ASSERT_EQ(notifications.posted().size(), 3U);
    EXPECT_EQ(latest(), "Your internet connection seems to be down. No network connection.");
}

TEST_F(MonitorEvaluationTest, AlertsAreAboutTheHostWhileTheyAreOn) {
    start();
    const std::string former = prefs->hostname();
    EXPECT_EQ(notifications.subject(), "");

    prefs->setShowNotifications(true);
    EXPECT_EQ(notifications.subject(), former);
    monitor->setHostname("192.0.2.7");
    EXPECT_EQ(notifications.subject(), "192.0.2.7");

    prefs->setShowNotifications(false);
    EXPECT_EQ(notifications.subject(), "");
}

TEST_F(MonitorEvaluationTest, AlertsThatAreOnAtTheStartAreAboutTheHost) {
    defaults.put(PreferenceKey::showNotifications, true);

    start();

    EXPECT_EQ(notifications.subject(), prefs->hostname());
}

TEST_F(MonitorEvaluationTest, AnOutageIsToldToTheNotificationsWhileAnotherRecords) {
    MonitorWorld second(folder);
    start();

    const OutageRecord waiting(second);

    EXPECT_EQ(waiting.readings.back().recording, Recording::otherRecords);
    EXPECT_EQ(second.notifications.posted().size(), 2U);
}

TEST_F(MonitorEvaluationTest, ATickAsksTheWatchdogBeforeItJudgesTheWindow) {
    defaults.put(PreferenceKey::showNotifications, true);
    start();
    pass(5);
    fallSilent();
    std::optional<std::int64_t> lostBefore;
    std::optional<std::int64_t> lostAfter;
    notifications.onPost = [&] { lostBefore = monitor->measured().ledger.session().lost; };
    monitor->onTick = [&](double /*now*/) {
        if (lostBefore && !lostAfter) {
            lostAfter = monitor->measured().ledger.session().lost;
        }
    };

    pass(15);

    ASSERT_TRUE(lostAfter);
    EXPECT_EQ(*lostAfter, *lostBefore + 1);
}

// What is published.

TEST_F(MonitorEvaluationTest, TheReadingIsThatOfTheLatestEvent) {
    start();
    EXPECT_EQ(monitor->reading().session.sent, 1);
    EXPECT_EQ(monitor->reading().latencyText, "–");
    EXPECT_EQ(monitor->reading().qualityTitle, "Connecting…");

    pass(0.5);
    EXPECT_EQ(monitor->reading().latencyText, "31 ms");
    EXPECT_TRUE(monitor->reading().lossIsKnown);
    EXPECT_EQ(monitor->reading().qualityTitle, "Excellent");

    fallSilent();
    pass(5.5);
    EXPECT_EQ(monitor->reading().session.lost, 1);
}

TEST_F(MonitorEvaluationTest, TheTickIsPublishedBeforeTheFrontEndIsTold) {
    start();
    fallSilent();
    std::vector<int> lost;
    monitor->onTick = [&](double /*now*/) {
        lost.push_back(static_cast<int>(monitor->reading().session.lost));
    };

    pass(7);

    EXPECT_THAT(lost, ElementsAre(0, 0, 0, 0, 0, 1, 2));
}

TEST_F(MonitorEvaluationTest, ANewHostHasNoLossBeforeItsFirstTick) {
    start();
    fallSilent();
    pass(10);
    ASSERT_TRUE(monitor->reading().isLossy());

    monitor->setHostname("192.0.2.2");

    EXPECT_FALSE(monitor->reading().isLossy());
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

TEST_F(ChangeSuppressionTest, APingOrReplyWakesObserversOnceATickWithoutNewsNever) {
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

TEST_F(ChangeSuppressionTest, AStartErrorThatComesBackUnchangedWakesNoObserver) {
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
