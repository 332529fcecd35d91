// What the updater makes of the answer to a user's own check.
#include "tests/app/Update/UpdateWorld.h"

#include <gmock/gmock.h>

namespace tarnwick::test {
namespace {

using testing::HasSubstr;
using namespace Updating;

using UpdateCheck = UpdateWorld;

TEST_F(UpdateCheck, FindsANewerVersion) {
    check();

    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_EQ(in<Found>()->update.release.version.text(), "1.1");
    EXPECT_EQ(in<Found>()->update.release.notes, "* Better");
    EXPECT_TRUE(in<Found>()->isAskedFor);
    EXPECT_EQ(engine().lastProblem(), "");
}

TEST_F(UpdateCheck, TellsItsUserAgentAndNoMoreThanAFeedMayHave) {
    check();

    ASSERT_EQ(server.requests().size(), 2u);
    EXPECT_EQ(server.requests().at(0).address, feedAddress);
    EXPECT_EQ(server.requests().at(1).address, std::string(feedAddress) + ".minisig");
    EXPECT_EQ(server.requests().at(0).userAgent, "Tarnwick/1.0");
    EXPECT_EQ(server.requests().at(0).sizeLimit, largestFeed);
    EXPECT_EQ(server.requests().at(1).sizeLimit, Minisign::largestSignature);
}

TEST_F(UpdateCheck, SaysThatThereIsNothingNewer) {
    publish("1.0");

    check();

    EXPECT_NE(in<NothingNewer>(), nullptr);
    engine().dismiss();
    EXPECT_NE(in<Idle>(), nullptr);
}

TEST_F(UpdateCheck, RemembersWhenItWas) {
    EXPECT_EQ(preferences.lastUpdateCheckDate(), today - std::chrono::hours(1));

    check();

    EXPECT_GT(preferences.lastUpdateCheckDate(), today - std::chrono::seconds(1));
}

TEST_F(UpdateCheck, RemembersWhenItWasAlsoWithoutAnUpdateForThisMachine) {
    minimumSystem = "99.0";
    publish("1.1");

    check();

    EXPECT_GT(preferences.lastUpdateCheckDate(), today - std::chrono::seconds(1));
}

TEST_F(UpdateCheck, CanNotBeAskedForWhileOneIsUnderWay) {
    EXPECT_TRUE(engine().canCheck());
    engine().check();
    EXPECT_FALSE(engine().canCheck());
    engine().check();

    loop.advance(10);

    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_TRUE(engine().canCheck());
}

TEST_F(UpdateCheck, CanBeCanceled) {
    engine().check();
    engine().cancel();
    EXPECT_NE(in<Idle>(), nullptr);
    EXPECT_EQ(server.transfersUnderWay(), 0);

    loop.advance(10);

    EXPECT_NE(in<Idle>(), nullptr);
}

TEST_F(UpdateCheck, TrustsTheSecondKeyToo) {
    publish("1.1", 0, MinisignKey(2));

    check();

    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(UpdateCheck, DoesNotTrustAFeedOfAnotherKey) {
    publish("1.1", 0, MinisignKey(3));

    check();

    EXPECT_EQ(failure(), "The update information is signed with an unknown key, so it is not trusted.");
    EXPECT_EQ(memory.lastFeed(), std::nullopt);
}

TEST_F(UpdateCheck, DoesNotTrustAChangedFeed) {
    server.files[feedAddress] += " ";

    check();

    EXPECT_EQ(failure(), "The update information does not match its signature, so it is not trusted.");
}

TEST_F(UpdateCheck, SaysThatAFeedCanNotBeRead) {
    publishText("{}");

    check();

    EXPECT_THAT(failure(), HasSubstr("The update information can't be read: "));
}

TEST_F(UpdateCheck, SaysThatTheServerHasNoFeed) {
    server.files.erase(feedAddress);

    check();

    EXPECT_EQ(failure(), "The update server does not have the file (404).");
    EXPECT_EQ(engine().lastProblem(), failure());
}

TEST_F(UpdateCheck, SaysThatThereIsNoNetwork) {
    server.files.clear();
    server.failures[feedAddress] = {.problem = Downloader::Problem::unreachable, .detail = ""};

    check();

    EXPECT_EQ(failure(), "The update server can't be reached.");
    EXPECT_EQ(preferences.lastUpdateCheckDate(), today - std::chrono::hours(1)) << "it was none";
}

TEST_F(UpdateCheck, DoesNotTrustAFeedFromThePast) {
    check();
    engine().remindLater();
    publish("1.1", 1);

    check();

    EXPECT_THAT(failure(), HasSubstr("older than what was received before"));
}

TEST_F(UpdateCheck, DoesNotTrustAFeedFromThePastAfterARestart) {
    check();
    restart();
    memory = UpdateMemory(folder.path() / "updates.json");
    publish("1.1", 1);

    check();

    EXPECT_THAT(failure(), HasSubstr("older than what was received before"));
}

TEST_F(UpdateCheck, DoesNotTrustAFeedFromBeforeOneThatHadNothingForThisMachine) {
    minimumSystem = "99.0";
    publish("1.2");
    check();
    EXPECT_EQ(failure(), "Tarnwick 1.2 needs Linux 99.0 or newer.");
    minimumSystem = "6.1";
    publish("1.1", 1); // since withdrawn

    check();

    EXPECT_THAT(failure(), HasSubstr("older than what was received before"));
}

TEST_F(UpdateCheck, DoesNotRememberWhenAFeedThatItDoesNotTrustWasSigned) {
    publish("1.1", -2);
    check();
    EXPECT_THAT(failure(), HasSubstr("dated in the future"));

    EXPECT_EQ(memory.lastFeed(), std::nullopt);
}

TEST_F(UpdateCheck, DoesNotTrustAFeedThatIsNotRenewed) {
    publish("1.1", 91);

    check();

    EXPECT_THAT(failure(), HasSubstr("more than 90 days old"));
}

TEST_F(UpdateCheck, DoesNotFindAnOlderVersion) {
    publish("0.9");

    check();

    EXPECT_NE(in<NothingNewer>(), nullptr);
}

TEST_F(UpdateCheck, BringsWhatAScheduledOneHasFoundToTheUser) {
    engine().start();
    loop.advance(2 * day);
    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_FALSE(in<Found>()->isAskedFor);
    const std::size_t before = feedRequests();

    engine().check();

    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_TRUE(in<Found>()->isAskedFor);
    EXPECT_EQ(feedRequests(), before);
}

TEST_F(UpdateCheck, TellsOnceOfAVersionThatDidNotRun) {
    memory.setRolledBack(ReleaseVersion::parse("1.1").value(), ReleaseVersion::parse("1.0").value());

    EXPECT_EQ(failure(), "Tarnwick 1.1 did not run on this machine, so version 1.0 is back.");

    restart();
    EXPECT_NE(in<Idle>(), nullptr);
}

TEST_F(UpdateCheck, AVersionThatDidNotRunIsFoundOnlyByTheUsersOwnCheck) {
    memory.setRolledBack(ReleaseVersion::parse("1.1").value(), ReleaseVersion::parse("1.0").value());
    engine().dismiss();
    engine().start();
    loop.advance(2 * day);
    EXPECT_NE(in<Idle>(), nullptr);

    check();

    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(UpdateCheck, NamesTheServersDomain) {
    const auto domain = [this](const char* address) { return makeEngine(work, address)->serverDomain(); };

    EXPECT_EQ(engine().serverDomain(), "updates.example");
    EXPECT_EQ(domain("https://updates.example:8443/feed.json"), "updates.example");
    EXPECT_EQ(domain("https://192.0.2.1:8443/feed.json"), "192.0.2.1");
    EXPECT_EQ(domain("https://[::1]:8443/feed.json"), "::1");
    EXPECT_EQ(domain("https://[2001:db8::1]/feed.json"), "2001:db8::1");
}

TEST_F(UpdateCheck, TellsItsFollowersOfEachChange) {
    int changes = 0;
    const auto tracking =
        withTracking([this] { static_cast<void>(engine().state()); }, [&changes] { ++changes; });

    engine().check();

    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace tarnwick::test
