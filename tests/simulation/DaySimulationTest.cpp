// A laptop's day, from one morning to the next: what its user sees, what is pinged, and what lies on disk.
#include "tests/simulation/Day.h"

#include "tests/support/Files.h"

#include <gmock/gmock.h>

namespace tarnwick::simulation {

namespace {

using namespace std::chrono_literals;
using LatencyChart::BarTone;
using Status = Monitor::Status;

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::Ge;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

/// So many bars are lit, with this title beside them.
auto showsBars(int lit, const std::string& title) {
    return AllOf(
        Field("icon", &StatusFace::icon, StatusFace::Icon::bars),
        Field("activeBars", &StatusFace::activeBars, lit), Field("title", &StatusFace::title, title));
}

/// The stations of the day: each goes on where the one before it has ended.
class DaySimulationTest : public testing::Test, protected Day {
protected:
    void startInTheMorning() {
        SCOPED_TRACE("08:00, start in the wireless network");
        launch();
        EXPECT_THAT(face(), showsBars(0, "…"));
        EXPECT_THAT(network.sent(), IsEmpty());

        monitor->start();
        path.report(true, {"wlan0"});
        pass(5.5);

        EXPECT_THAT(face(), showsBars(5, "31ms"));
        EXPECT_EQ(spoken(), "Excellent, 31 milliseconds, 0 percent packet loss");
        EXPECT_EQ(network.lookups(router), 1); // how the path is at first is no change of it
        EXPECT_EQ(session(), (StatCounter{6, 6, 0, 31.25, 31.25, 31.25}));
        EXPECT_EQ(allTime().sent, yesterday.sent + 6);
    }

    void countTheMorning() {
        SCOPED_TRACE("10:00, two hours have been counted");
        until(10h + 500ms);

        EXPECT_EQ(session(), (StatCounter{7201, 7201, 0, 31.25, 31.25, 31.25}));
        EXPECT_EQ(allTime().sent, yesterday.sent + 7201);
        EXPECT_EQ(onDisk().at(router).sent, allTime().sent - 1); // saved half a second ago, as every 20 s
    }

    void turnOnAlertsAndLoginItem() {
        SCOPED_TRACE("10:00, alerts and login item in the settings");
        frontEnd->settings.setShowNotifications(true);
        frontEnd->settings.launchAtLogin().set(true);

        EXPECT_EQ(notifications.canNotify(), NotificationCenter::Ability::yes);
        EXPECT_EQ(defaults.stored(PreferenceKey::showNotifications), UserDefaults::Value(true));
        EXPECT_EQ(frontEnd->loginItem.now, LoginItem::Status::enabled);
    }

    void changeTheHost() {
        SCOPED_TRACE("10:00, a new host in the settings");
        const StatCounter ofRouter = allTime();

        frontEnd->settings.commitHost("  echo.example\n");

        EXPECT_THAT(onDisk(), ElementsAre(Pair(router, ofRouter)));
        EXPECT_EQ(defaults.stored(PreferenceKey::hostname), UserDefaults::Value(std::string(server)));
        EXPECT_EQ(frontEnd->settings.addressLine(), "Resolving…");
        loop.runPending();
        EXPECT_EQ(spoken(), "Connecting");
        EXPECT_THAT(face(), showsBars(0, "…"));
        EXPECT_EQ(monitor->reading().samples, 0U);
    }

    void reachTheNewHost() {
        SCOPED_TRACE("10:00, the new host answers");
        const std::int64_t pingsToRouter = pingsTo(router);
        pass(5);

        EXPECT_EQ(pingsTo(router), pingsToRouter);
        EXPECT_EQ(frontEnd->settings.addressLine(), serverAddress);
        EXPECT_THAT(face(), showsBars(5, "31ms"));
        EXPECT_EQ(session(), (StatCounter{5, 5, 0, 31.25, 31.25, 31.25}));
        EXPECT_EQ(allTime(), session());
    }

    void plugInTheCable() {
        SCOPED_TRACE("14:00, another network path");
        until(14h + 250ms);
        const int lookups = network.lookups(server);
        answerAfter(cableDelay);

        path.report(true, {"eth0"});
        pass(0.5);
        path.report(true, {"eth0", "wlan0"});
        pass(0.96875);
        EXPECT_EQ(network.lookups(server), lookups);
        pass(0.03125);
        EXPECT_EQ(network.lookups(server), lookups + 1);
        pass(60);

        EXPECT_EQ(network.lookups(server), lookups + 1);
        EXPECT_THAT(face(), showsBars(5, "8ms"));
        EXPECT_EQ(session().sent, pingsTo(serverAddress));
        EXPECT_EQ(session().replied, session().sent);
    }

    void fallAsleep() {
        SCOPED_TRACE("23:00, sleep");
        until(23h + 10s);
        untilAPingIsOnItsWay();
        EXPECT_EQ(session().sent, pingsTo(serverAddress));
        EXPECT_NEAR(static_cast<double>(session().sent), 13 * 3600 + 10, 2);
        EXPECT_EQ(session().replied, session().sent - 1);
        EXPECT_LT(onDisk().at(server).sent, allTime().sent);

        // When this has returned, nothing holds the machine up any longer.
        sleep.goToSleep();

        EXPECT_EQ(onDisk().at(server), allTime());
        EXPECT_EQ(network.openSockets(), 0U);
    }

    void sleepOverNight() {
        SCOPED_TRACE("the night, with a moment before and after it in which the machine still runs");
        const std::size_t pings = network.sent().size();
        const int lookups = network.lookups(server);
        const StatCounter beforeTheNight = session();
        const std::string statistics = test::contentOf(statsFile());

        pass(3);
        loop.sleep(secondsUntil(24h + 7h) - 2);
        path.report(false, {});
        pass(2);

        EXPECT_THAT(network.sent(), SizeIs(pings));
        EXPECT_EQ(network.lookups(server), lookups);
        EXPECT_EQ(session(), beforeTheNight);
        EXPECT_EQ(test::contentOf(statsFile()), statistics);
        EXPECT_EQ(monitor->reading().status, Status::up);
    }

    void wakeUpBeforeTheNetwork() {
        SCOPED_TRACE("07:00, wake; the network follows five seconds later");
        const std::size_t pings = network.sent().size();
        const int lookups = network.lookups(server);
        setUnknownHost(server, "Temporary failure in name resolution");
        answerAfter(wirelessDelay);

        sleep.wake();
        pass(1.96875);
        EXPECT_EQ(network.lookups(server), lookups);
        pass(3.03125);
        EXPECT_GT(network.lookups(server), lookups);
        EXPECT_THAT(network.sent(), SizeIs(pings));
        EXPECT_EQ(monitor->reading().status, Status::starting);

        setHost(server, {serverAddress}, lookupDelay);
        path.report(true, {"wlan0"});
        pass(5);
        EXPECT_EQ(monitor->reading().status, Status::up);
        EXPECT_THAT(face(), showsBars(5, "31ms"));
    }

    void findNoTraceOfTheNight() {
        SCOPED_TRACE("07:00, figures and chart after the night");
        EXPECT_EQ(session().sent, pingsTo(serverAddress));
        EXPECT_EQ(session().replied, session().sent - 1); // the one that was on its way
        EXPECT_EQ(session().lost, 0);
        EXPECT_EQ(allTime(), session());
        EXPECT_THAT(monitor->measured().samples, Each(Field(&Sample::date, Ge(midnight + 24h + 7h))));
        EXPECT_EQ(bars(BarTone::good), 2);
        EXPECT_EQ(bars(BarTone::none), 34);
        EXPECT_THAT(notifications.posted(), IsEmpty());
    }

    void loseTheConnection() {
        SCOPED_TRACE("07:30, outage");
        until(24h + 7h + 30min);
        untilAPingIsOnItsWay();
        pass(0.5);
        const double lastReply = network.sent().back().at + wirelessDelay;
        silentFrom = loop.now();
        fallSilent();

        pass(lastReply + 8 - loop.now());
        EXPECT_EQ(monitor->reading().status, Status::up);
        EXPECT_THAT(face(), showsBars(1, "31ms (10%)")); // three of thirty
        EXPECT_THAT(notifications.posted(), IsEmpty());
        pass(1);

        EXPECT_EQ(face().icon, StatusFace::Icon::failed);
        EXPECT_EQ(face().title, "Failed");
        EXPECT_EQ(toolTip(), "No replies for 8 s");
        EXPECT_EQ(spoken(), "Connection down, No replies for 8 s");
        EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown));
    }

    void waitInVain() {
        SCOPED_TRACE("07:31, the outage goes on");
        pass(60);
        const StatCounter before = session();
        const std::size_t pings = network.sent().size();
        const int lookups = network.lookups(server);
        pass(640);

        EXPECT_EQ(before.lost, pingsBetween(silentFrom, frontEnd->since.at(Status::down)));
        EXPECT_EQ(session(), before);
        EXPECT_EQ(onDisk().at(server), allTime());
        EXPECT_GE(network.sent().size(), pings + 640);
        EXPECT_EQ(network.lookups(server), lookups + 40); // fifteen seconds after each, at the next tick
        EXPECT_EQ(bars(BarTone::outage), 35);
        EXPECT_EQ(bars(BarTone::none), 1); // the newest: what was sent last may still be answered
    }

    void restartTheWirelessNetwork() {
        SCOPED_TRACE("07:41, no network at all, then one that knows no names");
        setUnknownHost(server, "Temporary failure in name resolution");
        path.report(false, {});
        pass(30);
        EXPECT_EQ(spoken(), "Connection down, No network connection");

        path.report(true, {"wlan0"});
        pass(10);

        EXPECT_EQ(spoken(), "Connection down, Can’t find host “echo.example”");
        EXPECT_EQ(
            toolTip(),
            "Can’t find host “echo.example”\nCould not resolve host: Temporary failure in name resolution");
        EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown));
    }

    void haveTheConnectionBack() {
        SCOPED_TRACE("07:42, recovery");
        setHost(server, {serverAddress}, lookupDelay);
        answerAfter(wirelessDelay);
        pass(16);
        EXPECT_EQ(monitor->reading().status, Status::up);
        EXPECT_EQ(face().icon, StatusFace::Icon::bars);
        EXPECT_THAT(notifications.posted(), ElementsAre(connectionDown, connectionRestored));

        pass(60);
        EXPECT_EQ(spoken(), "Excellent, 31 milliseconds, 0 percent packet loss");
        EXPECT_THAT(face(), showsBars(5, "31ms"));
        EXPECT_EQ(frontEnd->settings.addressLine(), serverAddress);
    }

    void reviewTheDay() {
        SCOPED_TRACE("08:00, the day as a whole");
        until(24h + 8h - 10s);
        untilAPingIsOnItsWay();
        const auto& since = frontEnd->since;
        EXPECT_THAT(
            frontEnd->statuses, ElementsAre(
                                    Status::starting, Status::up, // the router
                                    Status::starting, Status::up, // the server
                                    Status::starting, Status::up, // the next morning
                                    Status::down, Status::up));   // the outage
        EXPECT_EQ(
            allTime().sent,
            pingsTo(serverAddress) - pingsBetween(since.at(Status::down), since.at(Status::up)));
        EXPECT_EQ(allTime().replied, allTime().sent - allTime().lost - 2); // on their way: at sleep, and now
        EXPECT_EQ(allTime(), session());
    }

    void quit() {
        SCOPED_TRACE("08:00, quit");
        const StatCounter counted = allTime();
        EXPECT_LT(onDisk().at(server).sent, counted.sent);

        frontEnd->menu.choose(MenuItem::Id::quit);
        EXPECT_EQ(frontEnd->windows.quits, 1);
        terminate();

        EXPECT_EQ(network.openSockets(), 0U);
        EXPECT_EQ(loop.timerCount(), 1U); // the network's own: the answer that is on its way
        EXPECT_THAT(
            onDisk(),
            ElementsAre(
                Pair(router, Field(&StatCounter::sent, yesterday.sent + 7201)), Pair(server, counted)));
    }

    void leaveNothingBehind() {
        SCOPED_TRACE("after the end");
        const std::size_t pings = network.sent().size();
        const std::string statistics = test::contentOf(statsFile());
        pass(1);
        EXPECT_EQ(loop.timerCount(), 0U);
        StatsRecorder next(store());
        next.load();
        EXPECT_EQ(next.state(), StatsRecorder::State::records);

        path.report(false, {});
        path.report(true, {"eth0"});
        sleep.goToSleep();
        sleep.wake();
        pass(3600);

        EXPECT_EQ(loop.timerCount(), 0U);
        EXPECT_THAT(network.sent(), SizeIs(pings));
        EXPECT_EQ(test::contentOf(statsFile()), statistics);
        EXPECT_THAT(notifications.posted(), SizeIs(2));
    }
};

TEST_F(DaySimulationTest, AWholeDayIsShownCountedAndAnnouncedAsItHappens) {
    startInTheMorning();
    countTheMorning();
    turnOnAlertsAndLoginItem();
    changeTheHost();
    reachTheNewHost();
    plugInTheCable();
    fallAsleep();
    sleepOverNight();
    wakeUpBeforeTheNetwork();
    findNoTraceOfTheNight();
    loseTheConnection();
    waitInVain();
    restartTheWirelessNetwork();
    haveTheConnectionBack();
    reviewTheDay();
    quit();
    leaveNothingBehind();
}

} // namespace

} // namespace tarnwick::simulation
