// A version that is ready, with other processes around it, on real folders.
#include "platform/bundle/PreparedUpdate.h"

#include "platform/bundle/BundleTrial.h"
#include "tests/platform/bundle/MadeBundle.h"

#include <gtest/gtest.h>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

constexpr auto noLongerThere = "The update is no longer there.";

class PreparedUpdateTest : public testing::Test {
protected:
    PreparedUpdateTest() {
        makeBundle(bundle, "1.0");
        makeBundle(update.other(), "1.1");
        record(Phase::prepared);
    }

    void record(Phase phase) const {
        ASSERT_TRUE(update.write({.phase = phase, .from = version("1.0"), .to = version("1.1")}));
    }

    static ReleaseVersion version(const std::string& text) { return ReleaseVersion::parse(text).value(); }

    [[nodiscard]] std::string inPlace() const { return versionOf(bundle).value_or(version("0")).text(); }

    [[nodiscard]] bool isClean() const { return !fs::exists(update.path()); }

    TemporaryFolder folder;
    fs::path bundle = folder.path() / "Tarn wick é.app";
    UpdateFolder update{bundle};
    PreparedUpdate prepared{update};
};

TEST_F(PreparedUpdateTest, TheExchangePutsTheNewVersionInPlaceAndKeepsTheOldOne) {
    EXPECT_EQ(prepared.exchange(), std::nullopt);

    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_EQ(versionOf(update.other()), version("1.0"));
    EXPECT_EQ(update.record().value().phase, Phase::fresh);
}

TEST_F(PreparedUpdateTest, NothingIsExchangedTwice) {
    ASSERT_EQ(prepared.exchange(), std::nullopt);

    EXPECT_EQ(prepared.exchange(), noLongerThere);

    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_EQ(update.record().value().phase, Phase::fresh);
}

TEST_F(PreparedUpdateTest, NothingIsHeldOrExchangedThatWasNotPrepared) {
    update.remove();

    EXPECT_EQ(prepared.hold(), noLongerThere);
    EXPECT_EQ(prepared.exchange(), noLongerThere);

    EXPECT_FALSE(prepared.isHeld());
    EXPECT_TRUE(isClean()) << "no folder is made for it";
}

TEST_F(PreparedUpdateTest, WhatIsHeldIsLeftAloneByAnotherStart) {
    ASSERT_EQ(prepared.hold(), std::nullopt);

    const BundleTrial anotherStart(update);
    PreparedUpdate ofAnother(update);

    EXPECT_EQ(ofAnother.hold(), noLongerThere);
    EXPECT_EQ(ofAnother.exchange(), noLongerThere);
    ofAnother.discard();
    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_EQ(prepared.exchange(), std::nullopt);
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(PreparedUpdateTest, TheNewVersionFindsTheFolderFreeAfterTheExchange) {
    ASSERT_EQ(prepared.hold(), std::nullopt);
    ASSERT_EQ(prepared.exchange(), std::nullopt);

    EXPECT_FALSE(prepared.isHeld());
    EXPECT_TRUE(BundleTrial(update).isOn());
}

TEST_F(PreparedUpdateTest, AnEndRightBeforeTheExchangeLeavesItReady) {
    record(Phase::exchanging);

    EXPECT_EQ(prepared.hold(), std::nullopt);
    EXPECT_EQ(prepared.exchange(), std::nullopt);

    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(PreparedUpdateTest, AWayBackIsNotReady) {
    for (const Phase phase : {Phase::fresh, Phase::begun, Phase::ended}) {
        record(phase);
        EXPECT_EQ(prepared.hold(), noLongerThere);
    }
}

TEST_F(PreparedUpdateTest, AVersionThatWasPutInPlaceByHandStays) {
    ASSERT_EQ(prepared.hold(), std::nullopt);
    makeBundle(bundle, "2.0");

    EXPECT_EQ(
        prepared.exchange(), "Tarnwick's folder has version 2.0 by now, so version 1.1 was not installed.");

    EXPECT_EQ(inPlace(), "2.0");
    EXPECT_TRUE(isClean());
}

TEST_F(PreparedUpdateTest, ABundleThatWasMovedAwayIsToldOf) {
    ASSERT_EQ(prepared.hold(), std::nullopt);
    fs::rename(bundle, folder.path() / "elsewhere.app");

    EXPECT_EQ(
        prepared.exchange(), "Tarnwick can't be replaced where it is: its folder was moved or removed.");

    EXPECT_FALSE(fs::exists(bundle));
    EXPECT_TRUE(isClean());
}

TEST_F(PreparedUpdateTest, AfterAFailedExchangeTheOldVersionIsThereAndNothingElse) {
    ASSERT_EQ(prepared.hold(), std::nullopt);
    fs::remove_all(update.unpacked());

    EXPECT_NE(prepared.exchange(), std::nullopt);

    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_TRUE(isClean());
    EXPECT_FALSE(prepared.isHeld());
}

TEST_F(PreparedUpdateTest, ItIsRemovedWhenItIsDiscarded) {
    prepared.discard();

    EXPECT_TRUE(isClean());
    EXPECT_EQ(inPlace(), "1.0");
}

TEST_F(PreparedUpdateTest, WhatLiesBehindALinkIsNeitherLockedNorRemoved) {
    const fs::path elsewhere = folder.path() / "elsewhere";
    fs::rename(update.path(), elsewhere);
    fs::create_directory_symlink(elsewhere, update.path());
    fs::remove(elsewhere / "update.lock");

    EXPECT_EQ(prepared.hold(), noLongerThere);
    prepared.discard();

    EXPECT_FALSE(fs::exists(elsewhere / "update.lock"));
    EXPECT_TRUE(fs::exists(elsewhere / "unpacked"));
}

} // namespace
} // namespace tarnwick::test
