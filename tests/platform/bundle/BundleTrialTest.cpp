// The steps from one version of a bundle to the next, and the way back, on real folders.
#include "platform/bundle/BundleTrial.h"

#include "platform/bundle/PreparedUpdate.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/platform/bundle/MadeBundle.h"
#include "tests/support/LoopTurn.h"

#include <gtest/gtest.h>

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

class BundleTrialTest : public testing::Test {
protected:
    BundleTrialTest() { makeBundle(bundle, "1.0"); }

    /// 1.1, beside the bundle.
    void prepare() const {
        fs::create_directories(update.path());
        fs::permissions(update.path(), fs::perms::owner_all);
        makeBundle(update.other(), "1.1");
        ASSERT_TRUE(update.write({.phase = Phase::prepared, .from = version("1.0"), .to = version("1.1")}));
    }

    void setPhase(Phase phase) const {
        auto record = update.record().value();
        record.phase = phase;
        ASSERT_TRUE(update.write(record));
    }

    void exchange() const {
        prepare();
        ASSERT_EQ(PreparedUpdate(update).exchange(), std::nullopt);
    }

    static ReleaseVersion version(const std::string& text) { return ReleaseVersion::parse(text).value(); }

    [[nodiscard]] std::string inPlace() const { return versionOf(bundle).value_or(version("0")).text(); }

    [[nodiscard]] bool isClean() const { return !fs::exists(update.path()); }

    TemporaryFolder folder;
    fs::path bundle = folder.path() / "Tarn wick é.app";
    UpdateFolder update{bundle};
};

TEST_F(BundleTrialTest, AStartWithoutAnUpdateIsNoTrial) {
    BundleTrial trial(update);

    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(trial.broughtBackFrom(), std::nullopt);
    trial.endWell();
    EXPECT_TRUE(isClean());
}

TEST_F(BundleTrialTest, TheNewVersionIsOnTrialUntilItPasses) {
    exchange();
    BundleTrial trial(update);
    EXPECT_TRUE(trial.isOn());
    EXPECT_EQ(update.record().value().phase, Phase::begun);

    EpollRunLoop loop;
    trial.pass(loop);

    EXPECT_FALSE(trial.isOn());
    ASSERT_TRUE(runOneTurn(loop, 30));
    EXPECT_TRUE(isClean());
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleTrialTest, AStartAfterOneThatEndedWithoutAWordBringsTheOldVersionBack) {
    exchange();
    {
        const BundleTrial crashed(update);
    }

    const BundleTrial trial(update);

    EXPECT_EQ(trial.broughtBackFrom(), version("1.1"));
    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_TRUE(isClean());
}

TEST_F(BundleTrialTest, AStartAfterOneThatEndedWellGoesOnWithTheTrial) {
    exchange();
    BundleTrial(update).endWell();
    EXPECT_EQ(update.record().value().phase, Phase::ended);

    const BundleTrial trial(update);

    EXPECT_TRUE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleTrialTest, ASecondInstanceBesideTheTrialLeavesItAlone) {
    exchange();
    const BundleTrial first(update);

    BundleTrial second(update);
    second.endWell();

    EXPECT_FALSE(second.isOn());
    EXPECT_EQ(second.broughtBackFrom(), std::nullopt);
    EXPECT_EQ(update.record().value().phase, Phase::begun);
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleTrialTest, APowerCutRightAfterTheExchangeLeavesTheNewVersionOnTrial) {
    exchange();
    setPhase(Phase::exchanging);

    const BundleTrial trial(update);

    EXPECT_TRUE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleTrialTest, WhatIsReadyIsNoTrialAndStays) {
    prepare();

    const BundleTrial trial(update);

    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(preparedIn(update).value().to, version("1.1"));
    EXPECT_EQ(inPlace(), "1.0");
}

TEST_F(BundleTrialTest, WhatIsReadyForAnotherVersionIsRemoved) {
    prepare();
    makeBundle(bundle, "0.9");

    const BundleTrial trial(update);

    EXPECT_TRUE(isClean());
    EXPECT_EQ(inPlace(), "0.9");
}

TEST_F(BundleTrialTest, ANewVersionThatIsNotThereAsAWholeIsRemoved) {
    prepare();
    fs::remove(update.other() / "Information.json");

    const BundleTrial trial(update);

    EXPECT_TRUE(isClean());
    EXPECT_EQ(inPlace(), "1.0");
}

TEST_F(BundleTrialTest, ADownloadThatWasBrokenOffIsRemoved) {
    writeFile(update.archive(), "part");
    writeFile(update.unpacked() / "Tarnwick.app" / "bin" / "x", "part");

    const BundleTrial trial(update);

    EXPECT_TRUE(isClean());
}

TEST_F(BundleTrialTest, AWayBackThatWasInterruptedIsCompleted) {
    exchange();
    setPhase(Phase::begun);
    ASSERT_EQ(bringBack(update), version("1.1"));
    // As if the power had gone right after the exchange.
    makeBundle(update.other(), "1.1");
    ASSERT_TRUE(update.write({.phase = Phase::begun, .from = version("1.0"), .to = version("1.1")}));

    const BundleTrial trial(update);

    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(trial.broughtBackFrom(), std::nullopt);
    EXPECT_EQ(inPlace(), "1.0");
    EXPECT_TRUE(isClean());
}

TEST_F(BundleTrialTest, ARemovalOfTheOldVersionThatWasInterruptedIsCompleted) {
    exchange();
    setPhase(Phase::begun);
    // As far as the end of the trial has come: the record goes first.
    fs::remove(update.path() / "update.json");
    fs::remove_all(update.other() / "bin");

    const BundleTrial trial(update);

    EXPECT_EQ(trial.broughtBackFrom(), std::nullopt);
    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_TRUE(isClean());
}

TEST_F(BundleTrialTest, WithoutAnOldVersionTheNewOneStays) {
    exchange();
    setPhase(Phase::begun);
    fs::remove_all(update.other());

    const BundleTrial trial(update);

    EXPECT_EQ(trial.broughtBackFrom(), std::nullopt);
    EXPECT_TRUE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
}

TEST_F(BundleTrialTest, AFolderThatOthersCanWriteToIsLeftAlone) {
    exchange();
    setPhase(Phase::begun);
    fs::permissions(update.path(), fs::perms::all);

    const BundleTrial trial(update);

    EXPECT_EQ(trial.broughtBackFrom(), std::nullopt);
    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_EQ(PreparedUpdate(update).exchange(), "The update is no longer there.");
    EXPECT_TRUE(fs::exists(update.other())) << "nothing is removed, either";
}

TEST_F(BundleTrialTest, ALinkInItsPlaceIsNotFollowed) {
    const UpdateFolder elsewhere(folder.path() / "elsewhere" / "Tarnwick.app");
    makeBundle(elsewhere.other(), "1.0");
    writeFile(elsewhere.archive(), "mine");
    fs::create_directory_symlink(elsewhere.path(), update.path());

    const BundleTrial trial(update);
    update.remove();

    EXPECT_EQ(contentOf(elsewhere.archive()), "mine");
    EXPECT_TRUE(fs::exists(elsewhere.other()));
}

TEST_F(BundleTrialTest, ARecordThatCanNotBeReadCountsAsNone) {
    exchange();
    writeFile(update.path() / "update.json", "{\"phase\":\"unknown\"");

    const BundleTrial trial(update);

    EXPECT_FALSE(trial.isOn());
    EXPECT_EQ(inPlace(), "1.1");
    EXPECT_TRUE(isClean());
}

} // namespace
} // namespace tarnwick::test
