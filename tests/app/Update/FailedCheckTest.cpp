// What becomes of a check that brings no feed that is trusted.
#include "tests/app/Update/UpdateWorld.h"
#include "tests/support/CaseName.h"

#include <functional>
#include <gmock/gmock.h>
#include <ostream>
#include <string>

namespace tarnwick::test {
namespace {

using testing::HasSubstr;
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

class Distrust : public UpdateWorld {
protected:
    /// A scheduled check with this feed.
    void meet(const std::function<void(UpdateWorld&)>& prepare) {
        prepare(*this);
        engine().start();
        loop.advance(day);
    }
};

TEST_F(Distrust, OfAStrangersKeyIsToldUntilAFeedIsTrusted) {
    meet([](UpdateWorld& world) { world.publish("1.1", 0, MinisignKey(3)); });
    EXPECT_EQ(
        engine().distrust(), "The update information is signed with an unknown key, so it is not trusted.");

    server.failures[feedAddress] = {.problem = Downloader::Problem::unreachable, .detail = ""};
    loop.advance(day);
    EXPECT_NE(engine().distrust(), "") << "nothing better has come";

    server.failures.clear();
    publish("1.0");
    loop.advance(1.1 * day);
    EXPECT_EQ(engine().distrust(), "");
}

TEST_F(Distrust, EndsWithATrustedFeedThatHasNothingForThisMachine) {
    meet([](UpdateWorld& world) { world.publish("1.1", 0, MinisignKey(3)); });
    ASSERT_NE(engine().distrust(), "");
    minimumSystem = "99.0";
    publish("1.2");

    loop.advance(1.1 * day);

    EXPECT_EQ(engine().distrust(), "");
}

TEST_F(Distrust, IsForAKeyThatWasRetired) {
    const auto key = [](unsigned char number) {
        return Minisign::parsePublicKey(MinisignKey(number).publicLine()).value();
    };
    DirectUpdateWork later(
        server, place, {.feedAddress = feedAddress, .publicKeys = {key(2), key(3)}}, "Tarnwick/1.0");
    const auto engineOfLaterBundle = makeEngine(later, feedAddress);
    publish("1.1", 0, MinisignKey(1));
    engineOfLaterBundle->check();
    loop.advance(10);
    EXPECT_THAT(engineOfLaterBundle->distrust(), HasSubstr("signed with an unknown key"));
    engineOfLaterBundle->dismiss();

    publish("1.1", 0, MinisignKey(3));
    engineOfLaterBundle->check();
    loop.advance(10);

    EXPECT_TRUE(std::holds_alternative<Found>(engineOfLaterBundle->state()));
}

TEST_F(Distrust, OfAFeedThatIsHeldBackIsTold) {
    meet([](UpdateWorld& world) { world.publish("1.1", 91); });

    EXPECT_THAT(engine().distrust(), HasSubstr("more than 90 days old"));
    EXPECT_NE(in<Idle>(), nullptr) << "no window";
}

TEST_F(Distrust, OfAFeedFromTheFutureIsTold) {
    meet([](UpdateWorld& world) { world.publish("1.1", -4); });

    EXPECT_THAT(engine().distrust(), HasSubstr("dated in the future"));
}

TEST_F(Distrust, OfAUsersOwnCheckIsToldToo) {
    publish("1.1", 91);

    check();

    EXPECT_EQ(engine().distrust(), failure());
}

TEST_F(Distrust, OfAFeedThatDoesNotMatchIsToldTheSecondTime) {
    meet([](UpdateWorld& world) { world.server.files[feedAddress] += " "; });
    EXPECT_EQ(engine().distrust(), "") << "the maker may be uploading just now";

    loop.advance(UpdateEngine::patienceWithNetwork + 10);

    EXPECT_THAT(engine().distrust(), HasSubstr("does not match its signature"));
}

TEST_F(Distrust, IsNotForAServerThatIsInTrouble) {
    for (const auto problem :
         {Downloader::Problem::unreachable, Downloader::Problem::silent, Downloader::Problem::unavailable,
          Downloader::Problem::missing, Downloader::Problem::untrusted, Downloader::Problem::notHttps}) {
        meet([problem](UpdateWorld& world) {
            world.server.failures[feedAddress] = {.problem = problem, .detail = ""};
        });
        loop.advance(day);
        EXPECT_EQ(engine().distrust(), "") << static_cast<int>(problem);
    }
}

} // namespace
} // namespace tarnwick::test
