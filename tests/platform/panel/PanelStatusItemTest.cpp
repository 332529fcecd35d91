// Which of two places the status item is shown in, and when.
#include "platform/panel/PanelStatusItem.h"

#include "tests/simulation/RecordingStatusItem.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using simulation::RecordingStatusItem;

/// Tells when it goes.
class TrayItem final : public StatusItem {
public:
    TrayItem(RecordingStatusItem& shown, int& alive) : shown_(shown), alive_(alive) { ++alive_; }

    ~TrayItem() override { --alive_; }

    void show(const ItemState& state) override { shown_.show(state); }

private:
    RecordingStatusItem& shown_;
    int& alive_;
};

class PanelStatusItemTest : public testing::Test {
protected:
    void make() {
        item = std::make_unique<PanelStatusItem>(PanelStatusItem::Needs{
            .loop = loop,
            .notifier = notifier,
            .hasWatcher = [this] { return hasWatcher; },
            .makeTrayItem = [this]() -> std::unique_ptr<StatusItem> {
                if (!canHaveTray) {
                    return nullptr;
                }
                auto made = std::make_unique<TrayItem>(tray, trayItems);
                trayItem = made.get();
                return made;
            },
            .hasTray = [this] { return hasTray; },
            .shownChanged = [this](bool isShown) { told.push_back(isShown); }});
    }

    simulation::VirtualRunLoop loop;
    RecordingStatusItem notifier;
    RecordingStatusItem tray;
    TrayItem* trayItem = nullptr;
    int trayItems = 0;
    bool hasWatcher = false;
    bool canHaveTray = true;
    bool hasTray = true;
    std::vector<bool> told; ///< whether it is shown
    std::unique_ptr<PanelStatusItem> item;
};

const ItemState threeBars{.face = {.activeBars = 3}, .toolTip = "tip", .accessibilityValue = "Good"};

} // namespace

TEST_F(PanelStatusItemTest, WithAWatcherThereIsNoTrayItem) {
    hasWatcher = true;
    make();
    item->show(threeBars);
    loop.advance(60);

    EXPECT_EQ(trayItems, 0);
    EXPECT_THAT(notifier.faces, testing::ElementsAre(threeBars.face));
    EXPECT_THAT(told, testing::ElementsAre(true));
}

TEST_F(PanelStatusItemTest, WithoutAWatcherTheTrayTakesOverAfterAWhile) {
    make();
    item->show(threeBars);
    loop.advance(1.9);
    EXPECT_EQ(trayItems, 0);

    loop.advance(0.2);

    EXPECT_EQ(trayItems, 1);
    EXPECT_THAT(tray.faces, testing::ElementsAre(threeBars.face));
    EXPECT_THAT(tray.toolTips, testing::ElementsAre("tip"));
    loop.advance(60);
    EXPECT_EQ(trayItems, 1);
    EXPECT_THAT(told, testing::ElementsAre(true));
}

TEST_F(PanelStatusItemTest, AWatcherThatComesInTimeKeepsTheTrayAway) {
    make();
    loop.advance(1);
    hasWatcher = true;
    item->watcherChanged();
    loop.advance(60);

    EXPECT_EQ(trayItems, 0);
}

TEST_F(PanelStatusItemTest, AWatcherThatComesLaterTakesTheItemOutOfTheTray) {
    make();
    loop.advance(10);

    hasWatcher = true;
    item->watcherChanged();

    EXPECT_EQ(trayItems, 0);
}

TEST_F(PanelStatusItemTest, WhenTheWatcherGoesForGoodTheTrayTakesOver) {
    hasWatcher = true;
    make();
    hasWatcher = false;
    item->watcherChanged();
    item->watcherChanged();
    loop.advance(2.1);

    EXPECT_EQ(trayItems, 1);
}

TEST_F(PanelStatusItemTest, TheTrayItemFollowsChanges) {
    make();
    loop.advance(3);
    item->show(threeBars);

    EXPECT_EQ(tray.faces.back(), threeBars.face);
    EXPECT_EQ(tray.toolTips.back(), threeBars.toolTip);
    EXPECT_EQ(tray.accessibilityValues.back(), threeBars.accessibilityValue);
}

TEST_F(PanelStatusItemTest, ClicksComeFromEitherPlace) {
    make();
    loop.advance(3);
    std::vector<std::optional<ScreenPoint>> clicks;
    item->onActivate = [&](std::optional<ScreenPoint> at) { clicks.push_back(at); };

    notifier.onActivate(ScreenPoint{1, 2});
    trayItem->onActivate(std::nullopt);

    EXPECT_THAT(clicks, testing::ElementsAre(std::optional(ScreenPoint{1, 2}), std::nullopt));
}

TEST_F(PanelStatusItemTest, AClickWithoutAListenerIsHarmless) {
    make();

    notifier.onActivate(std::nullopt);

    EXPECT_FALSE(item->onActivate);
}

TEST_F(PanelStatusItemTest, AnEndedItemIsToldOfNoClick) {
    make();

    item.reset();

    EXPECT_FALSE(notifier.onActivate);
}

// Whether it is shown.

TEST_F(PanelStatusItemTest, WithNeitherItIsToldOnceThatNothingShowsIt) {
    canHaveTray = false;
    make();
    loop.advance(3.9);
    EXPECT_TRUE(told.empty());

    loop.advance(60);

    EXPECT_THAT(told, testing::ElementsAre(false));
}

TEST_F(PanelStatusItemTest, ATrayThatComesAMomentLaterIsWaitedFor) {
    hasTray = false;
    make();
    loop.advance(3.5);
    hasTray = true;
    loop.advance(60);

    EXPECT_EQ(trayItems, 1);
    EXPECT_THAT(told, testing::ElementsAre(true));
}

TEST_F(PanelStatusItemTest, ATrayThatComesMuchLaterIsNoticed) {
    hasTray = false;
    make();
    loop.advance(60);
    EXPECT_THAT(told, testing::ElementsAre(false));

    hasTray = true;
    loop.advance(5);

    EXPECT_THAT(told, testing::ElementsAre(false, true));
}

TEST_F(PanelStatusItemTest, AWatcherThatComesMuchLaterShowsItAtOnce) {
    canHaveTray = false;
    make();
    loop.advance(60);

    hasWatcher = true;
    item->watcherChanged();

    EXPECT_THAT(told, testing::ElementsAre(false, true));
}

TEST_F(PanelStatusItemTest, AWatcherThatRestartsIsNoLoss) {
    canHaveTray = false;
    hasWatcher = true;
    make();
    hasWatcher = false;
    item->watcherChanged();
    loop.advance(3.5);
    hasWatcher = true;
    item->watcherChanged();
    loop.advance(60);

    EXPECT_THAT(told, testing::ElementsAre(true));
}

TEST_F(PanelStatusItemTest, AWatcherThatGoesForGoodIsTold) {
    canHaveTray = false;
    hasWatcher = true;
    make();
    hasWatcher = false;
    item->watcherChanged();
    loop.advance(60);

    EXPECT_THAT(told, testing::ElementsAre(true, false));
}

} // namespace tarnwick
