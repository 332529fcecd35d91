// Finding out which panel shows the items.
#include "platform/panel/PanelHostFinder.h"

#include "tests/platform/bus/BusTest.h"

#include <gtest/gtest.h>

#include <optional>

namespace tarnwick {

namespace {

constexpr double retryDelay = 0.2;

class PanelHostFinderTest : public BusTest {
protected:
    /// All programs of the test are one process; it is called as `process_` says at the time.
    void find() {
        finder_.emplace(bus_, [this](unsigned) { return std::vector{process_}; }, retryDelay);
        finder_->onChange = [this] { ++changes_; };
    }

    [[nodiscard]] bool runUntilHostIs(const std::string& process) {
        return runUntil([this, &process] { return finder_->host().process == process; });
    }

    [[nodiscard]] bool runUntilWatched() {
        return runUntil([this] { return !finder_->watcher().empty(); });
    }

    /// Until the bus daemon has refused one of three questions, each of which follows the answer to the one
    /// before.
    [[nodiscard]] bool runUntilRefused() {
        BusPeer& peer = addPeer();
        return runUntilHeardBy(peer) && runUntilHeardBy(peer) && runUntilHeardBy(peer);
    }

    std::string process_;
    int changes_ = 0;
    std::optional<PanelHostFinder> finder_;
};

/// One of the questions to the bus daemon.
class PanelHostQuestion : public PanelHostFinderTest, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(PanelHostFinderTest, AWatcherThatIsThereIsFound) {
    BusPeer& panel = addPeer();
    panel.requestName(PanelHostFinder::watcherName);
    process_ = "gnome-shell";

    find();

    ASSERT_TRUE(runUntilHostIs("gnome-shell"));
    ASSERT_TRUE(runUntilWatched());
    EXPECT_EQ(finder_->watcher(), panel.uniqueName());
}

TEST_F(PanelHostFinderTest, AWatcherThatComesLateIsFound) {
    process_ = "waybar";
    find();
    ASSERT_TRUE(runUntilConnected());

    addPeer().requestName(PanelHostFinder::watcherName);

    EXPECT_TRUE(runUntilHostIs("waybar"));
}

TEST_F(PanelHostFinderTest, AWatcherThatGoesIsMissed) {
    BusPeer& panel = addPeer();
    panel.requestName(PanelHostFinder::watcherName);
    process_ = "waybar";
    find();
    ASSERT_TRUE(runUntilHostIs("waybar"));
    ASSERT_TRUE(runUntilWatched());

    panel.releaseName(PanelHostFinder::watcherName);

    ASSERT_TRUE(runUntil([this] { return finder_->watcher().empty(); }));
    EXPECT_EQ(finder_->host().process, "");
}

TEST_F(PanelHostFinderTest, AnAnnouncedPanelDecidesBesideAnotherWatcher) {
    addPeer().requestName(PanelHostFinder::watcherName);
    process_ = "kded5";
    find();
    ASSERT_TRUE(runUntilHostIs("kded5"));
    process_ = "lxqt-panel";

    addPeer().requestName("org.kde.StatusNotifierHost-4711");

    EXPECT_TRUE(runUntilHostIs("lxqt-panel"));
}

TEST_F(PanelHostFinderTest, WhenAnAnnouncedPanelGoesTheWatcherDecidesAgain) {
    addPeer().requestName(PanelHostFinder::watcherName);
    process_ = "kded5";
    find();
    ASSERT_TRUE(runUntilHostIs("kded5"));
    process_ = "lxqt-panel";
    BusPeer& panel = addPeer();
    panel.requestName("org.kde.StatusNotifierHost-4711");
    ASSERT_TRUE(runUntilHostIs("lxqt-panel"));

    panel.releaseName("org.kde.StatusNotifierHost-4711");

    EXPECT_TRUE(runUntilHostIs("kded5"));
}

TEST_F(PanelHostFinderTest, OtherNamesAreOfNoInterest) {
    process_ = "waybar";
    find();
    ASSERT_TRUE(runUntilConnected());
    BusPeer& peer = addPeer();

    peer.requestName("org.kde.StatusNotifierItem-1-1");
    peer.requestName("org.kde.krunner");

    ASSERT_TRUE(runUntilHeardBy(peer));
    EXPECT_EQ(changes_, 0);
}

TEST_F(PanelHostFinderTest, ABusThatGoesTakesItsWatcherAlong) {
    addPeer().requestName(PanelHostFinder::watcherName);
    process_ = "waybar";
    find();
    ASSERT_TRUE(runUntilHostIs("waybar"));
    ASSERT_TRUE(runUntilWatched());

    stopBus();

    EXPECT_TRUE(runUntil([this] { return finder_->watcher().empty(); }));
}

TEST_P(PanelHostQuestion, IsRepeatedAfterAFailure) {
    stopBus();
    daemon_.refuseCall(GetParam());
    ASSERT_TRUE(daemon_.start());
    BusPeer& panel = addPeer();
    panel.requestName(PanelHostFinder::watcherName);
    process_ = "waybar";
    find();
    ASSERT_TRUE(runUntilConnected());
    ASSERT_TRUE(runUntilRefused());
    ASSERT_EQ(finder_->host().process, "");

    daemon_.refuseCall("");
    daemon_.reload();

    ASSERT_TRUE(runUntilHostIs("waybar"));
    ASSERT_TRUE(runUntilWatched());
    EXPECT_EQ(finder_->watcher(), panel.uniqueName());
}

INSTANTIATE_TEST_SUITE_P(
    PanelHostFinder, PanelHostQuestion,
    testing::Values("ListNames", "GetNameOwner", "GetConnectionUnixProcessID"),
    [](const auto& test) { return std::string(test.param); });

} // namespace tarnwick
