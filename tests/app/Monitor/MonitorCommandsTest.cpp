// What becomes of the text that a user enters as the host. Other commands: cases/host.txt.
#include "app/Monitor/Monitor.h"

#include "tests/simulation/MonitorWorld.h"
#include "tests/support/CaseName.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace tarnwick::simulation {

namespace {

class MonitorHostTextTest : public testing::Test, protected MonitorWorld {};

TEST_F(MonitorHostTextTest, IsTrimmedAndStored) {
    start();

    monitor->setHostname(" \t192.0.2.2\r\n");

    EXPECT_EQ(monitor->prefs().hostname(), "192.0.2.2");
    EXPECT_EQ(defaults.stored(PreferenceKey::hostname), UserDefaults::Value(std::string("192.0.2.2")));
}

TEST_F(MonitorHostTextTest, OfAPastedUrlGivesItsHost) {
    start();

    monitor->setHostname("https://192.0.2.2/x");

    EXPECT_EQ(monitor->prefs().hostname(), "192.0.2.2");
    EXPECT_EQ(defaults.stored(PreferenceKey::hostname), UserDefaults::Value(std::string("192.0.2.2")));
}

TEST_F(MonitorHostTextTest, ThatChangesAllTheTimeIsPingedAtMostOnceASecond) {
    start();
    pass(5.5);
    const double begin = loop.now();

    for (int change = 0; change < 200; ++change) {
        monitor->setHostname("192.0.2." + std::to_string(2 + change));
        pass(0.125);
    }

    const auto pings =
        std::ranges::count_if(network.sent(), [=](double at) { return at >= begin; }, &SentRequest::at);
    EXPECT_GE(pings, 10);
    EXPECT_LE(pings, 26); // in 25 seconds
}

TEST_F(MonitorHostTextTest, IsNeverPingedWithinASecondOfTheLastPing) {
    start();
    pass(5.5);

    for (const double gap : {0.125, 0.4, 0.9, 1.1, 1.3, 1.6, 2.5}) {
        for (int change = 0; change < 20; ++change) {
            monitor->setHostname("192.0.2." + std::to_string(2 + change));
            pass(gap);
        }
    }

    double before = -1;
    for (const SentRequest& request : network.sent()) {
        EXPECT_GE(request.at - before, 1 - 1e-9) << "at " << request.at;
        before = request.at;
    }
}

TEST_F(MonitorHostTextTest, ChangedBeforeTheStartIsThatOfTheStartAsAreOtherSettings) {
    create();
    prefs->setHostname("192.0.2.2");
    prefs->setPingTimeout(20);
    fallSilent();

    monitor->start();
    pass(5.5);
    prefs->setSlowPingThresholdMs(200);

    // A host taken for a new one now would empty the session.
    EXPECT_EQ(monitor->reading().session.sent, 6);
    // With the usual time-out of four seconds it would be down.
    pass(18.5);
    EXPECT_EQ(monitor->reading().status, Monitor::Status::starting);
}

struct HostText {
    std::string name;
    std::string text;

    friend void PrintTo(const HostText& param, std::ostream* out) { *out << param.name; }
};

class IgnoredHostTest : public MonitorHostTextTest, public testing::WithParamInterface<HostText> {};

TEST_P(IgnoredHostTest, ChangesNothingAndSavesNothing) {
    start();
    pass(5.5);
    defaults.forgetChanges();
    const Reading before = monitor->reading();

    monitor->setHostname(GetParam().text);
    defaults.put(PreferenceKey::hostname, GetParam().text);
    prefs->reload();

    EXPECT_FALSE(std::filesystem::exists(statsFile()));
    EXPECT_THAT(defaults.changes(), testing::IsEmpty());
    EXPECT_EQ(monitor->prefs().hostname(), host);
    EXPECT_EQ(monitor->reading(), before);
    EXPECT_EQ(restarts(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    MonitorCommandsTest, IgnoredHostTest,
    testing::Values(
        HostText{"Nothing", ""}, HostText{"Spaces", "   "}, HostText{"OtherWhiteSpace", "\t\r\n "},
        HostText{"ThePresentHost", MonitorWorld::host}, HostText{"ItPaddedBySpaces", "  192.0.2.1 "},
        HostText{"ItPaddedByLineBreaks", "\n192.0.2.1\t"}, HostText{"ItInAUrl", "http://192.0.2.1:8080/"},
        HostText{"TwoHosts", "192.0.2.2 192.0.2.3"}),
    test::caseName);

} // namespace

} // namespace tarnwick::simulation
