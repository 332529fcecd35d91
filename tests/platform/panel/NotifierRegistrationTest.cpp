// How the status item registers with panels.
#include "tests/platform/panel/NotifierStatusItemTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;

class NotifierRegistrationTest : public NotifierStatusItemTest {};

} // namespace

TEST_F(NotifierRegistrationTest, ItRegistersByTheNameOfItsConnection) {
    const Panel& panel = addPanel();
    makeItem();

    ASSERT_TRUE(runUntilRegistered(panel));

    EXPECT_THAT(panel.registered, ElementsAre(bus_.uniqueName()));
}

TEST_F(NotifierRegistrationTest, ItRegistersWithAWatcherThatComesLate) {
    makeItem();
    ASSERT_TRUE(runUntilConnected());

    const Panel& panel = addPanel();

    EXPECT_TRUE(runUntilRegistered(panel));
}

TEST_F(NotifierRegistrationTest, ItRegistersAgainWithEachNewWatcher) {
    Panel& first = addPanel();
    makeItem();
    ASSERT_TRUE(runUntilRegistered(first));
    first.peer.releaseName(PanelHostFinder::watcherName);

    const Panel& second = addPanel();

    EXPECT_TRUE(runUntilRegistered(second));
}

TEST_F(NotifierRegistrationTest, ItRegistersAgainWhenTheBusComesBack) {
    ASSERT_TRUE(runUntilRegistered((makeItem(), addPanel())));
    stopBusAndPanels();
    ASSERT_TRUE(runUntil([this] { return !item_->hasWatcher(); }));
    ASSERT_TRUE(daemon_.start());

    const Panel& panel = addPanel();

    EXPECT_TRUE(runUntilRegistered(panel));
}

TEST_F(NotifierRegistrationTest, AnUnreadItemIsRegisteredAgainABoundedNumberOfTimes) {
    const Panel& panel = addPanel();
    makeItem("", patience);

    ASSERT_TRUE(runUntilRegistered(panel, 1 + WatcherRegistration::mostRepetitions));

    runFor(4 * patience);
    EXPECT_EQ(panel.registered.size(), 1 + WatcherRegistration::mostRepetitions);
}

TEST_F(NotifierRegistrationTest, AnItemThatHasBeenReadIsNotRegisteredAgain) {
    const Panel& panel = addPanel();
    makeItem("", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    (void)properties();
    const std::size_t whenRead = panel.registered.size();

    runFor(6 * patience);

    EXPECT_EQ(panel.registered.size(), whenRead);
}

TEST_F(NotifierRegistrationTest, TellingOfAChangeIsNotTakenForReading) {
    const Panel& panel = addPanel();
    makeItem("", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    state_.accessibilityValue = "Good";
    item_->show(state_);

    EXPECT_TRUE(runUntilRegistered(panel, 2));
}

TEST_F(NotifierRegistrationTest, APanelThatHasNotReadTheMenuAtOnceHasNotTakenTheItem) {
    const Panel& panel = addPanel();
    makeItem("gnome-shell", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    (void)properties();

    EXPECT_TRUE(runUntilRegistered(panel, 2));
}

TEST_F(NotifierRegistrationTest, AfterReadingTheMenuSuchAPanelHasTakenTheItem) {
    Panel& panel = addPanel();
    makeItem("gnome-shell", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    readMenu(panel);
    const std::size_t whenRead = panel.registered.size();

    runFor(6 * patience);

    EXPECT_EQ(panel.registered.size(), whenRead);
}

TEST_F(NotifierRegistrationTest, ItTellsWhetherThereIsAWatcher) {
    makeItem();
    std::vector<bool> told;
    item_->onWatcherChange = [&] { told.push_back(item_->hasWatcher()); };
    ASSERT_TRUE(runUntilConnected());
    EXPECT_FALSE(item_->hasWatcher());

    Panel& panel = addPanel();
    ASSERT_TRUE(runUntilRegistered(panel));
    panel.peer.releaseName(PanelHostFinder::watcherName);

    ASSERT_TRUE(runUntil([&told] { return told.size() == 2; }));
    EXPECT_THAT(told, ElementsAre(true, false));
}

TEST_F(NotifierRegistrationTest, AListThatNoPanelShowsIsNoPlaceForIt) {
    const Panel& watcher = addPanel(false);
    makeItem();
    ASSERT_TRUE(runUntilConnected());

    runFor(patience);

    EXPECT_FALSE(item_->hasWatcher());
    EXPECT_TRUE(watcher.registered.empty());
}

TEST_F(NotifierRegistrationTest, ItRegistersWhenAPanelShowsTheList) {
    Panel& watcher = addPanel(false);
    makeItem();
    ASSERT_TRUE(runUntilConnected());
    runFor(patience);

    watcher.registerHost();

    EXPECT_TRUE(runUntilRegistered(watcher));
    EXPECT_TRUE(item_->hasWatcher());
}

TEST_F(NotifierRegistrationTest, APanelWithANameShowsTheListBeforeTheWatcherKnows) {
    Panel& watcher = addPanel(false);
    makeItem();
    ASSERT_TRUE(runUntilConnected());

    watcher.peer.requestName("org.kde.StatusNotifierHost-1");

    EXPECT_TRUE(runUntilRegistered(watcher));
}

TEST_F(NotifierRegistrationTest, WithoutABusThereIsNoWatcher) {
    BusConnection noBus(loop_, "");
    const NotifierStatusItem item({
        .loop = loop_,
        .bus = noBus,
        .painter = painter_,
        .menu = menu_,
        .colors = colors_,
        .panelTheme = panelTheme_,
        .processNames = [](unsigned) { return std::vector<std::string>(); },
    });
    ASSERT_TRUE(runUntil([&noBus] { return noBus.state() == BusConnection::State::unavailable; }));

    EXPECT_FALSE(item.hasWatcher());
}

} // namespace tarnwick
