// The menu that a panel draws: what the panel does with it, and which changes the panel is told.
#include "tests/platform/panel/DBusMenuTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TEST_F(DBusMenuTest, AClickChoosesTheRowAfterThePanelHasItsAnswer) {
    event(3, "clicked");

    EXPECT_TRUE(runUntil([this] { return !list_.chosen.empty(); }));
    EXPECT_THAT(list_.chosen, ElementsAre(3));
}

TEST_F(DBusMenuTest, AClickClosesTheMenu) {
    event(0, "opened");

    event(3, "clicked");

    EXPECT_EQ(list_.hides, 1);
}

TEST_F(DBusMenuTest, OnlyThePanelThatShowsTheMenuClosesIt) {
    BusPeer& other = addPeer();
    event(0, "opened");

    ASSERT_TRUE(runUntilAnswered(
        other.call(target(), "Event", std::int32_t{0}, std::string("closed"), noData, std::uint32_t{0})));
    ASSERT_TRUE(runUntilAnswered(
        other.call(target(), "Event", std::int32_t{3}, std::string("clicked"), noData, std::uint32_t{0})));
    ASSERT_TRUE(runUntil([this] { return !list_.chosen.empty(); }));
    EXPECT_EQ(list_.hides, 0);

    event(0, "closed");
    EXPECT_EQ(list_.hides, 1);
}

TEST_F(DBusMenuTest, PointingAtARowIsASignOfLifeAndChoosesNothing) {
    event(3, "hovered");

    EXPECT_EQ(list_.reads, 1);
    EXPECT_EQ(list_.hides, 0);
    ASSERT_TRUE(runUntilHeardBy(*panel_));
    EXPECT_THAT(list_.chosen, IsEmpty());
}

TEST_F(DBusMenuTest, WhenThePanelThatShowsItGoesTheMenuIsClosed) {
    event(0, "opened");
    ASSERT_TRUE(runUntilHeardBy(*panel_));

    peers_.clear();

    EXPECT_TRUE(runUntil([this] { return list_.hides == 1; }));
}

TEST_F(DBusMenuTest, APanelThatHasClosedTheMenuMayGo) {
    BusPeer& other = addPeer();
    event(0, "opened");
    event(0, "closed");
    const std::string gone = panel_->uniqueName();
    other.recordSignals("type='signal',member='NameOwnerChanged',arg0='" + gone + "'");

    peers_.erase(peers_.begin());

    ASSERT_TRUE(runUntil([&other] { return !other.takeSignals().empty(); }));
    ASSERT_TRUE(runUntilHeardBy(other));
    EXPECT_EQ(list_.hides, 1);
}

TEST_F(DBusMenuTest, OpeningAndClosingAreTold) {
    event(0, "opened");
    EXPECT_EQ(list_.shows, 1);

    event(0, "closed");
    EXPECT_EQ(list_.hides, 1);
}

TEST_F(DBusMenuTest, AGroupOfEventsNamesTheUnknownRows) {
    const std::vector<Event> events{
        {99, "clicked", noData, 0U},
        {3, "clicked", noData, 0U},
    };

    const auto errors = call("EventGroup", events)->value<Ids>();

    EXPECT_THAT(errors, ElementsAre(99));
    EXPECT_TRUE(runUntil([this] { return list_.chosen == std::vector<int>{3}; }));
}

TEST_F(DBusMenuTest, BeforeItIsReadTheMenuIsRefreshed) {
    (void)layout();
    list_.onRead = [this] { list_.list[0].label = "Good · 80 ms"; };

    EXPECT_TRUE(call("AboutToShow", std::int32_t{0})->value<bool>());

    EXPECT_THAT(signalsSoFar(), ElementsAre("ItemsPropertiesUpdated"));
}

TEST_F(DBusMenuTest, AMenuThatIsAsItWasNeedsNoUpdate) {
    EXPECT_FALSE(call("AboutToShow", std::int32_t{0})->value<bool>());

    EXPECT_EQ(list_.reads, 1);
}

TEST_F(DBusMenuTest, AMenuThatIsOnlyAboutToBeShownIsNotOpen) {
    (void)call("AboutToShow", std::int32_t{0});
    (void)call("AboutToShowGroup", Ids{0});

    EXPECT_EQ(list_.shows, 0);
}

TEST_F(DBusMenuTest, ChangedRowsAreToldWhenTheMenuOpens) {
    (void)layout();
    list_.list[0].label = "Good · 80 ms";

    event(0, "opened");

    EXPECT_THAT(signalsSoFar(), ElementsAre("ItemsPropertiesUpdated"));
}

TEST_F(DBusMenuTest, AboutToShowARowOrAnUnknownOneShowsNothing) {
    EXPECT_FALSE(call("AboutToShow", std::int32_t{3})->value<bool>());
    EXPECT_EQ(call("AboutToShow", std::int32_t{99})->error(), invalidArguments);

    EXPECT_EQ(list_.reads, 0);
}

TEST_F(DBusMenuTest, AboutToShowAGroupTellsWhichNeedUpdatesAndWhichAreUnknown) {
    list_.onRead = [this] { list_.list[0].label = "Good · 80 ms"; };

    const auto answer = call("AboutToShowGroup", Ids{0, 3, 99});

    const auto [updates, unknown] = answer->values<Ids, Ids>();
    EXPECT_THAT(updates, ElementsAre(0));
    EXPECT_THAT(unknown, ElementsAre(99));
}

TEST_F(DBusMenuTest, RowsThatDifferAreAChangeOfProperties) {
    list_.change();
    EXPECT_THAT(signalsSoFar(), IsEmpty());

    list_.list[0].label = "Good · 80 ms";
    list_.change();
    EXPECT_THAT(signalsSoFar(), ElementsAre("ItemsPropertiesUpdated"));

    list_.list[0].visible = false;
    list_.change();
    EXPECT_THAT(signalsSoFar(), ElementsAre("ItemsPropertiesUpdated"));
}

TEST_F(DBusMenuTest, ARowThatComesIsAChangeOfTheLayout) {
    const std::uint32_t revision = layout().first;
    list_.list.push_back({.id = 4, .label = "Later"});
    list_.change();

    EXPECT_THAT(signalsSoFar(), ElementsAre("LayoutUpdated"));
    EXPECT_GT(layout().first, revision);
}

TEST_F(DBusMenuTest, AnUpdateCarriesOnlyWhatHasChanged) {
    std::vector<Row> updated;
    std::vector<std::tuple<std::int32_t, Names>> removed;
    const Subscription match =
        panel_->link().addMatch("type='signal',member='ItemsPropertiesUpdated'", [&](BusMessage& message) {
            std::tie(updated, removed) = message.read<decltype(updated), decltype(removed)>().value();
        });
    list_.list[2].enabled = false;
    list_.list[2].iconName = "";

    list_.change();

    ASSERT_TRUE(runUntilHeardBy(*panel_));
    ASSERT_EQ(updated.size(), 1U);
    EXPECT_EQ(std::get<0>(updated[0]), 3);
    EXPECT_EQ(std::get<1>(updated[0]).size(), 1U);
    EXPECT_FALSE(std::get<bool>(std::get<1>(updated[0]).at("enabled")));
    ASSERT_EQ(removed.size(), 1U);
    EXPECT_THAT(std::get<1>(removed[0]), ElementsAre("icon-name"));
}

TEST_F(DBusMenuTest, WhenTheBusGoesTheMenuIsNoLongerShown) {
    event(0, "opened");

    stopBus();

    // Twice when the panel's end is told before the bus goes.
    EXPECT_TRUE(runUntil([this] { return list_.hides > 0; }));
}

} // namespace tarnwick
