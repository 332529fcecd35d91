// When the updater asks for newer versions by itself, and what it makes of the answer.
#include "core/Update/CheckSchedule.h"
#include "tests/app/Update/UpdateWorld.h"

#include <gmock/gmock.h>

namespace tarnwick::test {
namespace {

using testing::HasSubstr;
using namespace Updating;

using ScheduledCheck = UpdateWorld;

TEST_F(ScheduledCheck, ComesADayAfterTheLastOneAndALittleLater) {
    engine().start();
    const double due = day - 3600 + 0.5 * day / jitterPartOfInterval;

    loop.advance(due - 10);
    EXPECT_EQ(feedRequests(), 0u);

    loop.advance(20);
    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, ComesOnceADay) {
    publish("1.0");
    engine().start();

    loop.advance(10 * day);

    EXPECT_GE(feedRequests(), 9u);
    EXPECT_LE(feedRequests(), 10u);
    EXPECT_NE(in<Idle>(), nullptr) << "nobody is told that there is nothing newer";
}

TEST_F(ScheduledCheck, ReplacesNoWindowWithNothing) {
    publish("1.0");
    check();
    engine().start();
    loop.advance(3 * day);
    EXPECT_GE(feedRequests(), 3u);
    EXPECT_NE(in<NothingNewer>(), nullptr);

    server.failures[feedAddress] = {.problem = Downloader::Problem::unavailable, .detail = ""};
    loop.advance(day);
    EXPECT_NE(in<NothingNewer>(), nullptr);
    check();
    ASSERT_NE(failure(), "");
    server.failures[feedAddress] = {.problem = Downloader::Problem::unreachable, .detail = ""};
    loop.advance(2 * day);
    EXPECT_NE(failure(), "");
}

TEST_F(ScheduledCheck, ComesWhileAWindowSaysThatSomethingFailed) {
    server.failures[feedAddress] = {.problem = Downloader::Problem::unreachable, .detail = ""};
    check();
    ASSERT_NE(failure(), "");
    server.failures.clear();
    engine().start();

    loop.advance(day);

    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, IsNotSeenWhileAWindowIsOpen) {
    publish("1.0");
    check();
    engine().start();
    server.answers = false;

    loop.advance(2 * day);

    EXPECT_GT(server.transfersUnderWay(), 0);
    EXPECT_NE(in<NothingNewer>(), nullptr);
    EXPECT_TRUE(engine().canCheck());
    engine().check();
    EXPECT_EQ(server.transfersUnderWay(), 1);
    EXPECT_EQ(server.mostTransfersUnderWay(), 1) << "never two at once";
    EXPECT_FALSE(engine().canCheck());
}

TEST_F(ScheduledCheck, IsSeenOnceTheUserAsks) {
    server.answers = false;
    engine().start();
    loop.advance(day);
    ASSERT_NE(in<Checking>(), nullptr);
    EXPECT_FALSE(in<Checking>()->isAskedFor);
    EXPECT_TRUE(engine().canCheck());

    engine().check();

    EXPECT_TRUE(in<Checking>()->isAskedFor);
    EXPECT_FALSE(engine().canCheck());
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, KeepsAnOfferFresh) {
    engine().start();
    loop.advance(day);
    ASSERT_NE(in<Found>(), nullptr);

    publish("1.2");
    loop.advance(1.1 * day);

    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_EQ(in<Found>()->update.release.version.text(), "1.2");
    EXPECT_FALSE(in<Found>()->isAskedFor);
}

TEST_F(ScheduledCheck, KeepsAnOfferThatTheUserHasAskedFor) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    preferences.setSkippedUpdate("1.1");
    check();
    engine().start();

    loop.advance(2 * day);

    EXPECT_EQ(feedRequests(), 2u);
    ASSERT_NE(in<Found>(), nullptr) << "it was skipped once, but asked for since";
    EXPECT_TRUE(in<Found>()->isAskedFor);
    EXPECT_EQ(place.begun, 0) << "the user has the word";
}

TEST_F(ScheduledCheck, KeepsAnOfferWhenItFails) {
    engine().start();
    loop.advance(day);

    publish("1.1", 0, MinisignKey(3));
    loop.advance(2 * day);

    EXPECT_GE(feedRequests(), 2u);
    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, TakesAWithdrawnOfferBack) {
    engine().start();
    loop.advance(day);

    publish("1.0");
    loop.advance(1.1 * day);
    EXPECT_NE(in<Idle>(), nullptr);

    publish("1.1");
    loop.advance(1.1 * day);
    ASSERT_NE(in<Found>(), nullptr);
    minimumSystem = "99.0";
    publish("1.2");
    loop.advance(1.1 * day);
    EXPECT_NE(in<Idle>(), nullptr) << "nothing that runs here";
}

TEST_F(ScheduledCheck, EndsWithTheAnswerToAnOffer) {
    engine().start();
    loop.advance(day);
    for (const auto& answer : {&UpdateEngine::install, &UpdateEngine::skip, &UpdateEngine::remindLater}) {
        ASSERT_NE(in<Found>(), nullptr);
        server.answers = false;
        loop.advance(1.1 * day);
        ASSERT_EQ(server.transfersUnderWay(), 1);

        (engine().*answer)();

        EXPECT_EQ(server.transfersUnderWay(), in<Downloading>() != nullptr ? 1 : 0);
        engine().cancel();
        server.answers = true;
        check();
    }
}

TEST_F(ScheduledCheck, LeavesAVersionAloneThatIsReady) {
    check();
    engine().install();
    loop.advance(10);
    ASSERT_NE(in<Ready>(), nullptr);
    engine().start();
    publish("1.2");

    loop.advance(3 * day);

    EXPECT_EQ(feedRequests(), 1u);
    EXPECT_EQ(cost.questions, 0) << "the bus is left alone";
    EXPECT_NE(in<Ready>(), nullptr);
}

TEST_F(ScheduledCheck, RemindsADayLater) {
    engine().start();
    loop.advance(day);
    ASSERT_NE(in<Found>(), nullptr);

    engine().remindLater();
    EXPECT_NE(in<Idle>(), nullptr);

    loop.advance(1.1 * day);
    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, LeavesASkippedVersionAlone) {
    engine().start();
    loop.advance(day);
    engine().skip();
    EXPECT_EQ(preferences.skippedUpdate(), "1.1");

    loop.advance(3 * day);
    EXPECT_NE(in<Idle>(), nullptr);

    publish("1.2");
    loop.advance(1.1 * day);
    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, IsSilentWithoutANetworkAndTriesAgainWithinHours) {
    server.failures[feedAddress] = {.problem = Downloader::Problem::unreachable, .detail = ""};
    const auto feed = server.files.extract(feedAddress);
    engine().start();
    loop.advance(day + 7200);
    EXPECT_GE(feedRequests(), 2u);
    EXPECT_NE(in<Idle>(), nullptr);
    EXPECT_EQ(engine().lastProblem(), "");

    server.files[feedAddress] = feed.mapped();
    server.failures.clear();
    loop.advance(UpdateEngine::patienceWithNetwork + 10);

    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(ScheduledCheck, WaitsForAConnectionThatIsNotPaidByUse) {
    cost.isMetered = true;
    engine().start();
    loop.advance(3 * day);
    EXPECT_EQ(server.requests().size(), 0u);

    cost.isMetered = false;
    loop.advance(UpdateEngine::patienceWithNetwork + 10);

    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, IsMadeUpForSoonAfterASleep) {
    engine().start();
    loop.advance(3600);

    loop.sleep(3 * day);
    loop.advance(2 * 3600);

    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, LeavesAWakingMachineInPeaceAtFirst) {
    engine().start();
    const double due = day - 3600 + 0.5 * day / jitterPartOfInterval;
    const double calm = 60 + 0.5 * 300; // with its share of the jitter
    loop.advance(due - 10);

    loop.sleep(day);
    loop.advance(10 + calm - 1);
    EXPECT_EQ(feedRequests(), 0u);

    loop.advance(2);
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, TakesNoNoticeOfAShortNap) {
    engine().start();
    const double due = day - 3600 + 0.5 * day / jitterPartOfInterval;
    loop.advance(due - 10);

    loop.sleep(50);
    loop.advance(11);

    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, IsNotPutOffForYearsByAClockThatIsSetBack) {
    engine().start();
    loop.setWallClock(today - std::chrono::days(3000));
    publish("1.0");

    loop.advance(2 * 3600);

    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, DoesNotComeWhenTheUserDoesNotWantIt) {
    preferences.setAutomaticallyChecksForUpdates(false);
    engine().start();
    loop.advance(3 * day);
    EXPECT_EQ(server.requests().size(), 0u);
    EXPECT_EQ(loop.timerCount(), 0u);

    preferences.setAutomaticallyChecksForUpdates(true);
    loop.advance(3600);
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(ScheduledCheck, KeepsWhatWentWrongForTheSettingsWindow) {
    publish("1.1", 0, MinisignKey(3));
    engine().start();

    loop.advance(day);

    EXPECT_NE(in<Idle>(), nullptr) << "no window";
    EXPECT_THAT(engine().lastProblem(), HasSubstr("unknown key"));

    publish("1.0");
    loop.advance(1.1 * day);
    EXPECT_EQ(engine().lastProblem(), "");
}

} // namespace
} // namespace tarnwick::test
