// How the updater gets a newer version ready.
#include "tests/app/Update/UpdateWorld.h"

#include <gmock/gmock.h>

namespace tarnwick::test {
namespace {

using testing::SizeIs;
using namespace Updating;

class UpdateInstall : public UpdateWorld {
protected:
    UpdateInstall() { check(); }
};

using SilentInstall = UpdateWorld;

TEST_F(UpdateInstall, DownloadsTheArchiveAndItsSignature) {
    engine().install();
    loop.advance(10);

    EXPECT_EQ(place.content, server.files[archiveAddress]);
    ASSERT_THAT(place.claims, SizeIs(1));
    EXPECT_EQ(place.claims[0].signature, "the archive's signature");
    EXPECT_EQ(place.claims[0].version.text(), "1.1");
    EXPECT_EQ(place.claims[0].archive.size, 5000u);
    EXPECT_THAT(place.claims[0].keys, SizeIs(2));
    ASSERT_NE(in<Ready>(), nullptr);
    EXPECT_EQ(in<Ready>()->version.text(), "1.1");
    EXPECT_TRUE(in<Ready>()->isWatched);
    EXPECT_EQ(place.discarded, 0);
}

TEST_F(UpdateInstall, TellsHowFarItIs) {
    engine().install();
    ASSERT_NE(in<Downloading>(), nullptr);
    EXPECT_EQ(in<Downloading>()->received, 0u);

    loop.advance(0.55);

    ASSERT_NE(in<Downloading>(), nullptr);
    EXPECT_EQ(in<Downloading>()->received, 3000u);
    EXPECT_EQ(in<Downloading>()->update.archive.size, 5000u);
}

TEST_F(UpdateInstall, TellsThatItPrepares) {
    place.holdsPreparation = true;
    engine().install();

    loop.advance(10);

    EXPECT_NE(in<Preparing>(), nullptr);
    EXPECT_FALSE(engine().canCheck());
}

TEST_F(UpdateInstall, CanBeCanceledInTheMiddle) {
    engine().install();
    loop.advance(0.55);

    engine().cancel();

    EXPECT_NE(in<Idle>(), nullptr);
    EXPECT_EQ(place.discarded, 1);
    EXPECT_EQ(server.transfersUnderWay(), 0);
    loop.advance(10);
    EXPECT_NE(in<Idle>(), nullptr);
}

TEST_F(UpdateInstall, CanBeCanceledWhileItPrepares) {
    place.holdsPreparation = true;
    engine().install();
    loop.advance(10);

    engine().cancel();

    EXPECT_NE(in<Idle>(), nullptr);
    EXPECT_EQ(place.discarded, 1);
}

TEST_F(UpdateInstall, SaysBeforeTheDownloadThatTheFolderCanNotBeReplaced) {
    place.obstacleNow = "The folder can't be written.";
    const std::size_t before = server.requests().size();

    engine().install();

    EXPECT_EQ(failure(), "The folder can't be written.");
    loop.advance(10);
    EXPECT_THAT(server.requests(), SizeIs(before));
    EXPECT_EQ(place.begun, 0);
}

TEST_F(UpdateInstall, EndsWhenTheDiskIsFull) {
    place.problemAtAdd = "The disk is full.";
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), "The disk is full.");
    EXPECT_EQ(place.discarded, 1);
    EXPECT_EQ(server.transfersUnderWay(), 0);
}

TEST_F(UpdateInstall, EndsWhenThereIsNoPlaceForTheDownload) {
    place.problemAtBegin = "No place.";
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), "No place.");
    EXPECT_EQ(place.content, "");
}

TEST_F(UpdateInstall, EndsWhenTheServerGoesInTheMiddle) {
    server.files[archiveAddress].resize(3000);
    server.failures[archiveAddress] = {.problem = Downloader::Problem::brokenOff, .detail = ""};
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), "The connection to the update server has ended early.");
    EXPECT_EQ(place.discarded, 1);
    EXPECT_THAT(place.claims, SizeIs(0));
}

TEST_F(UpdateInstall, TakesNoMoreThanTheFeedTells) {
    server.files[archiveAddress].append(1, 'x');
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), "The update server sends more than it should.");
    EXPECT_THAT(place.claims, SizeIs(0));
}

TEST_F(UpdateInstall, EndsWithoutASignature) {
    server.files.erase(std::string(archiveAddress) + ".minisig");
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), "The update server does not have the file (404).");
    EXPECT_EQ(place.begun, 0);
}

TEST_F(UpdateInstall, DiscardsWhatCanNotBeTrusted) {
    place.problemAtPrepare = "The download does not match its signature, so it is not trusted.";
    engine().install();

    loop.advance(10);

    EXPECT_EQ(failure(), *place.problemAtPrepare);
    EXPECT_EQ(place.discarded, 1);
}

TEST_F(UpdateInstall, CanBeTriedAgainAfterAFailure) {
    place.problemAtAdd = "The disk is full.";
    engine().install();
    loop.advance(10);
    place.problemAtAdd = std::nullopt;

    check();
    engine().install();
    loop.advance(10);

    EXPECT_NE(in<Ready>(), nullptr);
}

TEST_F(UpdateInstall, StaysReadyWhenTheUserRestartsLater) {
    engine().install();
    loop.advance(10);

    engine().dismiss();

    ASSERT_NE(in<Ready>(), nullptr);
    EXPECT_FALSE(in<Ready>()->isWatched);
    engine().check();
    EXPECT_TRUE(in<Ready>()->isWatched);
}

TEST_F(SilentInstall, GetsAVersionReadyWithoutAsking) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    engine().start();

    loop.advance(2 * day);

    ASSERT_NE(in<Ready>(), nullptr);
    EXPECT_FALSE(in<Ready>()->isWatched);
}

// Else a user who leaves it to the program would never learn of a new version that it can't install.
TEST_F(SilentInstall, OffersWhatItCanNotInstall) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.problemAtAdd = "The disk is full.";
    engine().start();

    loop.advance(day);

    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_EQ(in<Found>()->update.release.version.text(), "1.1");
    EXPECT_FALSE(in<Found>()->isAskedFor);
    EXPECT_EQ(engine().lastProblem(), "The disk is full.");
    EXPECT_EQ(place.discarded, 1);
}

TEST_F(SilentInstall, OffersWhatItCanNotTrust) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.problemAtPrepare = "The download does not match its signature, so it is not trusted.";
    engine().start();

    loop.advance(day);

    EXPECT_NE(in<Found>(), nullptr);
    engine().install();
    loop.advance(10);
    EXPECT_EQ(failure(), *place.problemAtPrepare);
}

TEST_F(SilentInstall, OffersAVersionWhoseArchiveIsMissing) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    server.files.erase(archiveAddress);
    engine().start();

    loop.advance(day);

    EXPECT_NE(in<Found>(), nullptr);
}

TEST_F(SilentInstall, OffersAVersionWhereTheFolderCanNotBeReplaced) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.obstacleNow = "The folder can't be written.";
    engine().start();

    loop.advance(day);

    ASSERT_NE(in<Found>(), nullptr);
    EXPECT_EQ(engine().lastProblem(), "The folder can't be written.");
    EXPECT_EQ(place.begun, 0);
    engine().install();
    EXPECT_EQ(failure(), "The folder can't be written.");
}

TEST_F(SilentInstall, DoesNotDownloadAgainWhatItCouldNotInstall) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.problemAtAdd = "The disk is full.";
    engine().start();
    for (int days = 0; days < 3; ++days) {
        loop.advance(1.1 * day);
        ASSERT_NE(in<Found>(), nullptr) << days;
        engine().remindLater();
    }
    EXPECT_EQ(place.begun, 1);

    publish("1.2");
    loop.advance(1.1 * day);

    EXPECT_EQ(place.begun, 2) << "another version may do better";
}

TEST_F(SilentInstall, TriesAgainADayLaterWhenTheNetworkFails) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    server.failures[archiveAddress] = {.problem = Downloader::Problem::brokenOff, .detail = ""};
    engine().start();
    loop.advance(day);
    EXPECT_NE(in<Idle>(), nullptr);
    EXPECT_EQ(engine().lastProblem(), "The connection to the update server has ended early.");
    EXPECT_EQ(place.discarded, 1);
    server.failures.clear();

    loop.advance(1.1 * day);

    EXPECT_NE(in<Ready>(), nullptr);
}

TEST_F(SilentInstall, CanBeWatched) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.holdsPreparation = true;
    server.partSize = 1; // a byte each tenth of a second
    engine().start();
    loop.advance(day - 1800 + 200);
    ASSERT_NE(in<Downloading>(), nullptr);
    EXPECT_TRUE(engine().canCheck());

    engine().check();

    EXPECT_TRUE(in<Downloading>()->isWatched);
    EXPECT_FALSE(engine().canCheck()) << "the user sees it";
    loop.advance(600);
    ASSERT_NE(in<Preparing>(), nullptr);
    EXPECT_TRUE(in<Preparing>()->isWatched);
}

TEST_F(SilentInstall, CanBeWatchedWhileItPrepares) {
    preferences.setAutomaticallyDownloadsUpdates(true);
    place.holdsPreparation = true;
    engine().start();
    loop.advance(day);
    ASSERT_NE(in<Preparing>(), nullptr);
    EXPECT_TRUE(engine().canCheck());

    engine().check();

    EXPECT_TRUE(in<Preparing>()->isWatched);
    EXPECT_FALSE(engine().canCheck());
    EXPECT_EQ(feedRequests(), 1u);
}

TEST_F(SilentInstall, IsNotForTheUsersOwnCheck) {
    preferences.setAutomaticallyDownloadsUpdates(true);

    check();

    EXPECT_NE(in<Found>(), nullptr);
    EXPECT_EQ(place.begun, 0);
}

} // namespace
} // namespace tarnwick::test
