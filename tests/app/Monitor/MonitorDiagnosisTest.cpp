// Whose fault it is, as the monitor publishes and posts it.
#include "tests/app/Diagnostician/FakeAddressNames.h"
#include "tests/app/Diagnostician/FakeConnectivityCheck.h"
#include "tests/app/Diagnostician/FakeLinkInspector.h"
#include "tests/app/Diagnostician/FakeNameServerCheck.h"
#include "tests/app/Diagnostician/FakeProbeNetwork.h"
#include "tests/app/MonitorSurroundings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::size_t probesToLearn = 15; // three of each of five hops
const std::string routerOnly = "Your router answers in 2 ms; nothing beyond it has answered for ";

const std::string name = "one.example";

/// Pings a host behind four routers, every second; it answers after 20 ms.
class MonitorDiagnosisTest : public testing::Test, protected MonitorSurroundings {
protected:
    void SetUp() override { prefs.setShowNotifications(true); }

    void watchFor(double seconds) {
        path.report(true, {"eth0"});
        monitor.start();
        loop.advance(seconds);
    }

    /// A host by its name, whose lookup takes so many seconds.
    void watchName(double lookupSeconds) {
        network.setHost(name, std::vector{simulation::VirtualNetwork::address("203.0.113.9")}, lookupSeconds);
        prefs.setHostname(name);
        watchFor(20);
    }

    /// Nothing behind this hop answers; 1: not even the router does.
    void cutAt(int hop) {
        probes.silentFrom = hop;
        fallSilent();
    }

    void restore() {
        probes.silentFrom = 0;
        network.setBehavior([](const auto&) { return simulation::Answer{}; });
    }

    /// Seconds from now until it holds; 600 when it never did.
    template<typename Condition>
    double secondsUntil(Condition holds) {
        double seconds = 0;
        for (; seconds < 600 && !holds(); seconds += 0.5) {
            loop.advance(0.5);
        }
        return seconds;
    }

    [[nodiscard]] bool isDown() const { return monitor.reading().status == Monitor::Status::down; }

    [[nodiscard]] bool hasBlame() const {
        const auto& verdict = monitor.reading().verdict;
        return verdict && verdict->blame != Blame::unclear;
    }

    simulation::FakeProbeNetwork probes{
        loop, {"192.0.2.1", "198.51.100.1", "198.51.100.7", "203.0.113.1", "203.0.113.9"}};
    simulation::FakeLinkInspector link{loop};
    simulation::FakeNameServerCheck nameServers{loop};
    simulation::FakeConnectivityCheck connectivity{loop};
    simulation::FakeAddressNames addressNames{loop};
    Monitor monitor{
        prefs, environment(
                   nullptr, DiagnosisSources{
                                .probes = probes,
                                .link = link,
                                .nameServers = nameServers,
                                .connectivity = connectivity,
                                .addressNames = addressNames})};
};

} // namespace

TEST_F(MonitorDiagnosisTest, WhileAllIsWellThereIsNoneAndThePathIsLearntOnce) {
    watchFor(600);

    EXPECT_FALSE(monitor.reading().verdict);
    EXPECT_THAT(monitor.reading().path, IsEmpty());
    EXPECT_THAT(monitor.reading().itemToolTip(), testing::Not(HasSubstr("router")));
    EXPECT_THAT(probes.sent, SizeIs(probesToLearn));
    EXPECT_EQ(link.asked, 1);
}

TEST_F(MonitorDiagnosisTest, StandsWithinFiveSecondsOfDown) {
    watchFor(60);

    cutAt(2);
    secondsUntil([this] { return isDown(); });

    EXPECT_LE(secondsUntil([this] { return hasBlame(); }), 5);
    EXPECT_EQ(monitor.reading().verdict->blame, Blame::provider);
    EXPECT_THAT(monitor.reading().path, SizeIs(5));
    EXPECT_THAT(monitor.reading().itemToolTip(), StartsWith("No replies for 8 s\n" + routerOnly));
}

TEST_F(MonitorDiagnosisTest, IsTheSecondSentenceOfTheNotification) {
    watchFor(60);

    cutAt(2);
    secondsUntil([this] { return isDown(); });

    ASSERT_THAT(notifications.shown(), SizeIs(1));
    EXPECT_THAT(
        notifications.shown().front().body,
        AllOf(
            StartsWith("Your internet connection seems to be down. No replies for "),
            HasSubstr(" s. " + routerOnly), EndsWith(" s.")));
}

TEST_F(MonitorDiagnosisTest, StandsWithinTenSecondsOfSlowAnswers) {
    watchFor(60);

    probes.lateFrom = 3;
    probes.extraMs = 400;
    answerAfter(0.42);

    EXPECT_LE(secondsUntil([this] { return hasBlame(); }), 10);
    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
    EXPECT_EQ(monitor.reading().verdict->blame, Blame::provider);
}

TEST_F(MonitorDiagnosisTest, IsWithdrawnWhenTheConnectionIsBack) {
    watchFor(60);
    cutAt(2);
    secondsUntil([this] { return hasBlame(); });

    restore();
    secondsUntil([this] { return !isDown(); });

    EXPECT_LE(secondsUntil([this] { return !monitor.reading().verdict; }), 30);
    loop.advance(31); // in case that it breaks again
    const std::size_t sent = probes.sent.size();
    loop.advance(600);
    EXPECT_THAT(probes.sent, SizeIs(sent));
    EXPECT_THAT(monitor.reading().path, IsEmpty());
}

TEST_F(MonitorDiagnosisTest, AnotherNetworkHasAnotherPath) {
    watchFor(60);

    path.report(true, {"wlan0"});
    loop.advance(60);

    EXPECT_THAT(probes.sent, SizeIs(2 * probesToLearn));
}

TEST_F(MonitorDiagnosisTest, AnotherHostTakesTheVerdictAlong) {
    watchFor(60);
    cutAt(2);
    secondsUntil([this] { return hasBlame(); });

    restore();
    monitor.setHostname("192.0.2.9");
    loop.advance(2);

    EXPECT_FALSE(monitor.reading().verdict);
}

TEST_F(MonitorDiagnosisTest, APauseTakesTheVerdictAlongAndAsksNobody) {
    watchFor(60);
    cutAt(2);
    secondsUntil([this] { return hasBlame(); });

    monitor.pause(3600);
    EXPECT_FALSE(monitor.reading().verdict);
    EXPECT_THAT(monitor.reading().path, IsEmpty());
    const std::size_t sent = probes.sent.size();
    const std::size_t questions = connectivity.asked.size();
    const int links = link.asked;
    loop.advance(3599);

    EXPECT_THAT(probes.sent, SizeIs(sent));
    EXPECT_THAT(connectivity.asked, SizeIs(questions));
    EXPECT_EQ(link.asked, links);
}

TEST_F(MonitorDiagnosisTest, APauseInTheMiddleOfLearningThePathStopsThat) {
    watchFor(4);
    const std::size_t sent = probes.sent.size();
    ASSERT_THAT(sent, AllOf(testing::Gt(0U), testing::Lt(probesToLearn)));

    monitor.pause(3600);
    loop.advance(3599);

    EXPECT_THAT(probes.sent, SizeIs(sent));
}

TEST_F(MonitorDiagnosisTest, InAPauseNoNameServerIsAsked) {
    watchName(0.1);
    network.setHost(name, PingError::resolution("Temporary failure in name resolution"));
    path.report(true, {"eth0", "wlan0"});
    secondsUntil([this] { return hasBlame(); });

    monitor.pause(3600);
    const std::size_t asked = nameServers.asked.size();
    const int lookups = network.lookups(name);
    loop.advance(3599);

    EXPECT_THAT(nameServers.asked, SizeIs(asked));
    EXPECT_EQ(network.lookups(name), lookups);
}

TEST_F(MonitorDiagnosisTest, AfterAPauseThePathIsLearntAnew) {
    watchFor(60);
    monitor.pause(60);
    loop.advance(120);

    EXPECT_THAT(probes.sent, SizeIs(2 * probesToLearn));
    EXPECT_FALSE(monitor.reading().verdict);
}

TEST_F(MonitorDiagnosisTest, ALongerWayAfterAPauseIsTheUsualOne) {
    watchFor(60);
    monitor.pause(60);
    loop.advance(59.5);
    answerAfter(0.15);

    EXPECT_EQ(secondsUntil([this] { return monitor.reading().verdict.has_value(); }), 600);
}

TEST_F(MonitorDiagnosisTest, AnOutageAfterAPauseIsJudgedByWhatIsFoundThen) {
    watchFor(60);
    monitor.pause(60);
    loop.advance(90);

    cutAt(2);
    secondsUntil([this] { return isDown(); });

    EXPECT_LE(secondsUntil([this] { return hasBlame(); }), 5);
    EXPECT_EQ(monitor.reading().verdict->blame, Blame::provider);
}

TEST_F(MonitorDiagnosisTest, WhileTheNameIsFoundInTimeNoNameServerIsAsked) {
    watchName(1.4);
    path.report(true, {"eth0", "wlan0"});
    loop.advance(600);

    EXPECT_EQ(network.lookups(name), 2);
    EXPECT_THAT(nameServers.asked, IsEmpty());
    EXPECT_THAT(connectivity.asked, IsEmpty());
}

TEST_F(MonitorDiagnosisTest, ANameThatIsNoLongerFoundIsTheNameServersFault) {
    watchName(0.1);
    network.setHost(name, PingError::resolution("Temporary failure in name resolution"));
    path.report(true, {"eth0", "wlan0"});

    EXPECT_LE(secondsUntil([this] { return hasBlame(); }), 10);
    EXPECT_EQ(
        monitor.reading().verdict->evidence,
        "Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last address, does.");
    EXPECT_EQ(nameServers.asked.front().host, name);
}

TEST_F(MonitorDiagnosisTest, SoIsOneWhoseLookupGoesOn) {
    watchName(0.1);
    network.setHangingHost(name);
    path.report(true, {"eth0", "wlan0"});

    EXPECT_LE(secondsUntil([this] { return hasBlame(); }), 10);
    EXPECT_EQ(monitor.reading().verdict->blame, Blame::nameServer);
    EXPECT_NE(monitor.reading().status, Monitor::Status::down);
}

TEST_F(MonitorDiagnosisTest, ALookupThatIsLateIsTheNameServersFaultOnceItHasEnded) {
    nameServers.servers[0] = {
        .address = "192.0.2.53", .answer = NameServerEvidence::Answer::found, .ms = 1600};
    watchName(1.6);

    ASSERT_TRUE(hasBlame());
    EXPECT_EQ(monitor.reading().verdict->evidence, "Name server 192.0.2.53 took 1600 ms to answer.");
    EXPECT_EQ(monitor.reading().status, Monitor::Status::up);
}

TEST_F(MonitorDiagnosisTest, ALookupThatWasGivenUpForAnotherHostIsNotLate) {
    network.setHangingHost(name);
    prefs.setHostname(name);
    watchFor(1);
    monitor.setHostname("192.0.2.9");
    loop.advance(60);

    EXPECT_THAT(nameServers.asked, IsEmpty());
}

TEST_F(MonitorDiagnosisTest, WithoutTheMeansThereIsNone) {
    Monitor blind{prefs, environment()};

    blind.start();
    loop.advance(10);
    cutAt(2);
    loop.advance(60);

    EXPECT_EQ(blind.reading().status, Monitor::Status::down);
    EXPECT_FALSE(blind.reading().verdict);
    EXPECT_THAT(
        notifications.shown(), testing::ElementsAre(testing::Field(
                                   &simulation::RecordingNotificationCenter::Notification::body,
                                   "Your internet connection seems to be down. No replies for 8 s.")));
}

} // namespace tarnwick
