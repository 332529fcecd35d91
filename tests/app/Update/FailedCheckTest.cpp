// What becomes of a check that brings no feed that is trusted.
#include "tests/app/Update/UpdateWorld.h"
#include "tests/support/CaseName.h"

#include <functional>
#include <gmock/gmock.h>
#include <ostream>
#include <string>

namespace tarnwick::test {
namespace {

using namespace Updating;

/// What may come instead.
struct NoFeed {
    std::string name;
    std::function<void(UpdateWorld&)> prepare;

    friend void PrintTo(const NoFeed& tested, std::ostream* out) { *out << tested.name; }
};

NoFeed failing(const std::string& name, Downloader::Problem problem) {
    return {name, [problem](UpdateWorld& world) {
                world.server.failures[UpdateWorld::feedAddress] = {.problem = problem, .detail = ""};
            }};
}

class FailedCheck : public UpdateWorld, public testing::WithParamInterface<NoFeed> {
protected:
    FailedCheck() { GetParam().prepare(*this); }
};

INSTANTIATE_TEST_SUITE_P(
    Answers, FailedCheck,
    testing::Values(
        failing("ServerInTrouble", Downloader::Problem::unavailable),
        failing("UntrustedCertificate", Downloader::Problem::untrusted),
        failing("RedirectToHttp", Downloader::Problem::notHttps),
        failing("BrokenOff", Downloader::Problem::brokenOff),
        failing("Missing", Downloader::Problem::missing),
        NoFeed{"Changed", [](UpdateWorld& world) { world.server.files[UpdateWorld::feedAddress] += " "; }},
        NoFeed{"OfAStranger", [](UpdateWorld& world) { world.publish("1.1", 0, MinisignKey(3)); }},
        NoFeed{"Stale", [](UpdateWorld& world) { world.publish("1.1", 91); }},
        NoFeed{"Unreadable", [](UpdateWorld& world) { world.publishText("{}"); }}),
    caseName);

TEST_P(FailedCheck, IsNotTheLastOne) {
    check();

    EXPECT_NE(failure(), "");
    EXPECT_EQ(preferences.lastUpdateCheckDate(), today - std::chrono::hours(1));
}

TEST_P(FailedCheck, IsMadeUpForWithinHours) {
    engine().start();
    loop.advance(day);
    ASSERT_EQ(feedRequests(), 1u);
    EXPECT_NE(engine().lastProblem(), "");
    EXPECT_NE(in<Idle>(), nullptr) << "no window";

    publish("1.1");
    server.failures.clear();
    loop.advance(UpdateEngine::patienceWithNetwork + 10);

    EXPECT_NE(in<Found>(), nullptr);
    EXPECT_EQ(engine().lastProblem(), "");
}

TEST_P(FailedCheck, IsMadeUpForLessAndLessOften) {
    engine().start();

    loop.advance(11 * day);

    EXPECT_GE(feedRequests(), 11u);
    EXPECT_LE(feedRequests(), 16u);
}

TEST_P(FailedCheck, IsMadeUpForWithinHoursAgainAfterOneThatSucceeded) {
    const auto files = server.files;
    const auto failures = server.failures;
    engine().start();
    loop.advance(5 * day);
    publish("1.0");
    server.failures.clear();
    loop.advance(day + 10);
    ASSERT_EQ(engine().lastProblem(), "");
    const std::size_t before = feedRequests();

    server.files = files;
    server.failures = failures;
    loop.advance(2 * day);

    EXPECT_GE(feedRequests() - before, 4u);
}

} // namespace
} // namespace tarnwick::test
