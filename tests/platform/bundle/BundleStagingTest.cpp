// From a download to an unpacked version beside the bundle, with real archives and signatures.
#include "platform/bundle/BundleStaging.h"

#include "platform/bundle/PreparedUpdate.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/platform/archive/MadeArchive.h"
#include "tests/platform/bundle/MadeBundle.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/MinisignKey.h"
#include "tests/support/ThreadsEnd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Problem = UpdatePlace::Problem;

const auto* const threadsEnd = testing::AddGlobalTestEnvironment(new ThreadsEnd);

class BundleStagingTest : public testing::Test {
protected:
    BundleStagingTest() { makeBundle(bundle, "1.0"); }

    /// The bytes of an archive with this version in it.
    [[nodiscard]] std::string archiveOf(const std::string& version, mode_t mode = 0755) const {
        const fs::path file = folder.path() / "made.tar.zst";
        MadeArchive archive(file);
        archive.folder("Tarnwick.app").folder("Tarnwick.app/bin");
        archive.file("Tarnwick.app/bin/tarnwick", "#!/bin/sh\n", mode);
        archive.file("Tarnwick.app/Information.json", informationOf(version));
        archive.close();
        return contentOf(file);
    }

    [[nodiscard]] static UpdatePlace::Claim claimOf(const std::string& content) {
        Sha256 digest{};
        ::crypto_hash_sha256(
            digest.data(), reinterpret_cast<const unsigned char*>(content.data()), content.size());
        const MinisignKey key(1);
        return {
            .archive =
                {.address = "https://one.example/T.tar.zst",
                 .machine = "x86_64",
                 .size = content.size(),
                 .sha256 = digest},
            .version = ReleaseVersion::parse("1.1").value(),
            .signature = key.sign(content, "file:T.tar.zst\tversion:1.1"),
            .keys = {Minisign::parsePublicKey(key.publicLine()).value()}};
    }

    Problem download(const std::string& content) {
        if (auto problem = staging.begin()) {
            return problem;
        }
        return staging.add(content);
    }

    Problem prepared(const UpdatePlace::Claim& claim) {
        std::optional<Problem> result;
        staging.prepare(claim, [&result](const Problem& problem) { result = problem; });
        while (!result && runOneTurn(loop, 30)) {
        }
        return result.value_or("it never ends");
    }

    TemporaryFolder folder;
    EpollRunLoop loop;
    fs::path bundle = folder.path() / "Tarnwick.app";
    UpdateFolder update{bundle};
    BundleStaging staging{loop, update, ReleaseVersion::parse("1.0").value()};
};

TEST_F(BundleStagingTest, UnpacksAVerifiedDownloadBesideTheBundle) {
    const std::string content = archiveOf("1.1");
    ASSERT_EQ(staging.obstacle(), std::nullopt);
    ASSERT_EQ(download(content), std::nullopt);

    ASSERT_EQ(prepared(claimOf(content)), std::nullopt);

    EXPECT_EQ(versionOf(update.other()), ReleaseVersion::parse("1.1"));
    EXPECT_EQ(versionOf(bundle), ReleaseVersion::parse("1.0"));
    EXPECT_FALSE(fs::exists(update.archive()));
    EXPECT_EQ(preparedIn(update).value().to, ReleaseVersion::parse("1.1"));
}

TEST_F(BundleStagingTest, IsOfNoUseToOtherUsers) {
    ASSERT_EQ(download("x"), std::nullopt);

    EXPECT_EQ(fs::status(update.path()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(update.archive()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(BundleStagingTest, StoresNothingWhereOthersCanWrite) {
    fs::create_directories(update.path());
    fs::permissions(update.path(), fs::perms::all);

    EXPECT_THAT(staging.begin().value_or(""), HasSubstr("belongs to somebody else"));
    EXPECT_FALSE(fs::exists(update.archive()));
}

TEST_F(BundleStagingTest, UnpacksNothingThatIsNotSigned) {
    const std::string content = archiveOf("1.1");
    auto claim = claimOf(content);
    claim.signature = MinisignKey(2).sign(content, "file:T.tar.zst\tversion:1.1");
    ASSERT_EQ(download(content), std::nullopt);

    EXPECT_THAT(prepared(claim).value_or(""), HasSubstr("not trusted"));

    EXPECT_FALSE(fs::exists(update.unpacked()));
    EXPECT_EQ(update.record(), std::nullopt);
}

TEST_F(BundleStagingTest, UnpacksNothingThatIsCutShort) {
    const std::string content = archiveOf("1.1");
    ASSERT_EQ(download(content.substr(0, content.size() - 1)), std::nullopt);

    EXPECT_NE(prepared(claimOf(content)), std::nullopt);
    EXPECT_FALSE(fs::exists(update.unpacked()));
}

TEST_F(BundleStagingTest, RefusesAnotherVersionUnderAGoodSignature) {
    const std::string content = archiveOf("0.9");
    ASSERT_EQ(download(content), std::nullopt);

    EXPECT_EQ(prepared(claimOf(content)), "The download is not Tarnwick 1.1.");
    EXPECT_EQ(update.record(), std::nullopt);
}

TEST_F(BundleStagingTest, RefusesABundleWhoseProgramCanNotBeStarted) {
    const std::string content = archiveOf("1.1", 0644);
    ASSERT_EQ(download(content), std::nullopt);

    EXPECT_EQ(prepared(claimOf(content)), "The download is not Tarnwick 1.1.");
}

TEST_F(BundleStagingTest, BeginsAnewInPlaceOfWhatWasThere) {
    ASSERT_EQ(download("an older download"), std::nullopt);
    writeFile(update.unpacked() / "x", "");

    ASSERT_EQ(download("new"), std::nullopt);

    EXPECT_EQ(contentOf(update.archive()), "new");
    EXPECT_FALSE(fs::exists(update.unpacked()));
}

TEST_F(BundleStagingTest, DiscardingLeavesNothing) {
    ASSERT_EQ(download("x"), std::nullopt);

    staging.discard();

    EXPECT_FALSE(fs::exists(update.path()));
}

TEST_F(BundleStagingTest, DiscardingInTheMiddleOfTheWorkLeavesNoVersionBehind) {
    const std::string content = archiveOf("1.1");
    ASSERT_EQ(download(content), std::nullopt);
    bool isTold = false;
    staging.prepare(claimOf(content), [&isTold](const Problem&) { isTold = true; });

    staging.discard();

    ASSERT_TRUE(runOneTurn(loop, 30)); // it has ended
    EXPECT_FALSE(isTold);
    EXPECT_FALSE(fs::exists(update.path()));
    EXPECT_EQ(staging.begin(), std::nullopt);
}

TEST_F(BundleStagingTest, TwoInstancesDoNotUpdateAtOnce) {
    ASSERT_EQ(download("x"), std::nullopt);
    BundleStaging other{loop, update, ReleaseVersion::parse("1.0").value()};

    EXPECT_EQ(other.begin(), "Another Tarnwick is updating this folder.");
    other.discard();

    EXPECT_EQ(contentOf(update.archive()), "x");
}

TEST_F(BundleStagingTest, TellsWhatIsInTheWayBeforehand) {
    fs::remove_all(bundle);

    EXPECT_NE(staging.obstacle(), std::nullopt);
}

} // namespace
} // namespace tarnwick::test
