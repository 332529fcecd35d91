// The menu that a panel draws, as the panel gets it.
#include "platform/panel/DBusMenu.h"

#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <tuple>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Ids = std::vector<std::int32_t>;
using Names = std::vector<std::string>;
using Value = std::variant<std::monostate, bool, std::uint32_t, std::string, Names, std::vector<Names>>;
using Properties = std::map<std::string, Value>;
using RowLayout = std::tuple<std::int32_t, Properties, std::vector<std::variant<std::monostate>>>;
using Layout = std::tuple<std::int32_t, Properties, std::vector<std::variant<RowLayout>>>;
using Row = std::tuple<std::int32_t, Properties>;
using Event = std::tuple<std::int32_t, std::string, std::variant<std::string>, std::uint32_t>;

const std::variant<std::string> noData;

constexpr const char* invalidArguments = BusError::invalidArguments;

class ListedMenu final : public PanelMenu {
public:
    [[nodiscard]] std::vector<PanelMenuRow> rows() const override { return list; }

    void choose(int id) override { chosen.push_back(id); }

    void willRead() override {
        ++reads;
        if (onRead) {
            onRead();
        }
    }

    void didShow() override { ++shows; }

    void didHide() override { ++hides; }

    void change() const { onChange(); }

    std::vector<PanelMenuRow> list{
        {.id = 1, .label = "Excellent · 23 ms"},
        {.id = 2, .isSeparator = true},
        {.id = 3, .label = "Quit", .iconName = "exit", .shortcutKey = "Q"},
    };
    std::function<void()> onRead;
    std::vector<int> chosen;
    int reads = 0;
    int shows = 0;
    int hides = 0;
};

class DBusMenuTest : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        ASSERT_TRUE(runUntilConnected());
        panel_ = &addPeer();
        panel_->recordSignals("type='signal',interface='com.canonical.dbusmenu'");
    }

    [[nodiscard]] BusPeer::Target target() const {
        return {bus_.uniqueName(), DBusMenu::path, "com.canonical.dbusmenu"};
    }

    template<typename... Arguments>
    [[nodiscard]] std::shared_ptr<BusPeer::Answer> call(
        const std::string& method, const Arguments&... arguments) {
        auto answer = panel_->call(target(), method, arguments...);
        EXPECT_TRUE(runUntilAnswered(answer));
        return answer;
    }

    std::shared_ptr<BusPeer::Answer> event(std::int32_t id, const std::string& name) {
        return call("Event", id, name, noData, std::uint32_t{0});
    }

    [[nodiscard]] std::pair<std::uint32_t, Layout> layout(
        std::int32_t parent = 0, std::int32_t depth = -1, const Names& names = {}) {
        const auto answer = call("GetLayout", parent, depth, names);
        EXPECT_EQ(answer->error(), "");
        const auto [revision, result] = answer->values<std::uint32_t, Layout>();
        return {revision, result};
    }

    [[nodiscard]] static RowLayout rowIn(const Layout& layout, std::size_t index) {
        return std::get<RowLayout>(std::get<2>(layout).at(index));
    }

    [[nodiscard]] static std::vector<int> ids(const Layout& layout) {
        std::vector<int> result;
        for (const auto& child : std::get<2>(layout)) {
            result.push_back(std::get<0>(std::get<RowLayout>(child)));
        }
        return result;
    }

    [[nodiscard]] std::vector<std::string> signalsSoFar() {
        EXPECT_TRUE(runUntilHeardBy(*panel_));
        return panel_->takeSignals();
    }

    ListedMenu list_;
    DBusMenu menu_{loop_, bus_, list_, "/icons"};
    BusPeer* panel_ = nullptr;
};

} // namespace

TEST_F(DBusMenuTest, TheLayoutHasAllRowsInTheirOrder) {
    const Layout root = layout().second;

    EXPECT_EQ(std::get<0>(root), 0);
    EXPECT_EQ(std::get<std::string>(std::get<1>(root).at("children-display")), "submenu");
    EXPECT_THAT(ids(root), ElementsAre(1, 2, 3));
}

TEST_F(DBusMenuTest, ARowHasItsProperties) {
    const auto row = rowIn(layout().second, 2);

    EXPECT_EQ(std::get<std::string>(std::get<1>(row).at("label")), "Quit");
    EXPECT_EQ(std::get<std::string>(std::get<1>(row).at("icon-name")), "exit");
    EXPECT_THAT(
        std::get<std::vector<Names>>(std::get<1>(row).at("shortcut")),
        ElementsAre(ElementsAre("Control", "Q")));
}

TEST_F(DBusMenuTest, ALabelThatIsNoTextDoesNotCostTheConnection) {
    list_.list[0].label = "host \xFF";

    EXPECT_EQ(std::get<std::string>(std::get<1>(rowIn(layout().second, 0)).at("label")), "host \uFFFD");
}

TEST_F(DBusMenuTest, ALayoutOfDepthZeroHasNoRows) {
    EXPECT_THAT(std::get<2>(layout(0, 0).second), IsEmpty());
}

TEST_F(DBusMenuTest, ALayoutHasOnlyThePropertiesThatAreAskedFor) {
    const auto row = rowIn(layout(0, 1, {"icon-name"}).second, 2);

    EXPECT_EQ(std::get<1>(row).size(), 1U);
    EXPECT_TRUE(std::get<1>(row).contains("icon-name"));
}

TEST_F(DBusMenuTest, TheLayoutOfARowIsTheRowAlone) {
    const Layout row = layout(3).second;

    EXPECT_EQ(std::get<0>(row), 3);
    EXPECT_EQ(std::get<std::string>(std::get<1>(row).at("label")), "Quit");
    EXPECT_THAT(std::get<2>(row), IsEmpty());
}

TEST_F(DBusMenuTest, ReadingTheLayoutIsTold) {
    int reads = 0;
    menu_.onRead = [&reads] { ++reads; };

    (void)layout();

    EXPECT_EQ(reads, 1);
}

TEST_F(DBusMenuTest, TheLayoutOfAnUnknownRowIsAnError) {
    EXPECT_EQ(call("GetLayout", std::int32_t{99}, std::int32_t{-1}, Names())->error(), invalidArguments);
}

TEST_F(DBusMenuTest, GroupPropertiesAreThoseOfTheNamedRowsThatExist) {
    const auto answer = call("GetGroupProperties", Ids{3, 99, 1}, Names{"label"});

    const auto rows = answer->value<std::vector<Row>>();

    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(std::get<0>(rows[0]), 3);
    EXPECT_EQ(std::get<std::string>(std::get<1>(rows[1]).at("label")), "Excellent · 23 ms");
}

TEST_F(DBusMenuTest, GroupPropertiesOfNoRowAreThoseOfAll) {
    const auto rows = call("GetGroupProperties", Ids(), Names())->value<std::vector<Row>>();

    EXPECT_EQ(rows.size(), 4U);
}

TEST_F(DBusMenuTest, APropertyIsReadByItsName) {
    const auto value = call("GetProperty", std::int32_t{3}, std::string("label"))->value<Value>();

    EXPECT_EQ(std::get<std::string>(value), "Quit");
}

TEST_F(DBusMenuTest, APropertyThatIsNotMentionedHasItsDefault) {
    const auto value = call("GetProperty", std::int32_t{3}, std::string("enabled"))->value<Value>();

    EXPECT_TRUE(std::get<bool>(value));
}

TEST_F(DBusMenuTest, APropertyThatNoRowHasIsAnError) {
    EXPECT_EQ(call("GetProperty", std::int32_t{3}, std::string("color"))->error(), invalidArguments);
    EXPECT_EQ(call("GetProperty", std::int32_t{99}, std::string("label"))->error(), invalidArguments);
}

TEST_F(DBusMenuTest, TheMenuHasTheProtocolsProperties) {
    const BusPeer::Target properties{target().destination, DBusMenu::path, "org.freedesktop.DBus.Properties"};
    const auto answer = panel_->call(properties, "GetAll", std::string("com.canonical.dbusmenu"));
    ASSERT_TRUE(runUntilAnswered(answer));

    const auto values = answer->value<Properties>();

    EXPECT_EQ(std::get<std::uint32_t>(values.at("Version")), 3U);
    EXPECT_EQ(std::get<std::string>(values.at("Status")), "normal");
    EXPECT_EQ(std::get<std::string>(values.at("TextDirection")), "ltr");
    EXPECT_THAT(std::get<Names>(values.at("IconThemePath")), ElementsAre("/icons"));
}

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

TEST_F(DBusMenuTest, PointingAtARowChoosesNothing) {
    event(3, "hovered");

    ASSERT_TRUE(runUntilHeardBy(*panel_));
    EXPECT_THAT(list_.chosen, IsEmpty());
}

TEST_F(DBusMenuTest, PointingAtARowIsASignOfLife) {
    event(3, "hovered");

    EXPECT_EQ(list_.reads, 1);
    EXPECT_EQ(list_.hides, 0);
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

TEST_F(DBusMenuTest, AnEventOfAnUnknownRowIsAnError) {
    EXPECT_EQ(event(99, "clicked")->error(), invalidArguments);
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

TEST_F(DBusMenuTest, AGroupOfUnknownRowsOnlyIsAnError) {
    const std::vector<Event> events{{99, "clicked", noData, 0U}};

    EXPECT_EQ(call("EventGroup", events)->error(), invalidArguments);
    EXPECT_EQ(call("AboutToShowGroup", Ids{98, 99})->error(), invalidArguments);
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

TEST_F(DBusMenuTest, AChangedTextIsAChangeOfProperties) {
    list_.list[0].label = "Good · 80 ms";
    list_.change();

    EXPECT_THAT(signalsSoFar(), ElementsAre("ItemsPropertiesUpdated"));
}

TEST_F(DBusMenuTest, ARowThatIsHiddenIsAChangeOfProperties) {
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

TEST_F(DBusMenuTest, RowsThatAreTheSameAreNotTold) {
    list_.change();

    EXPECT_THAT(signalsSoFar(), IsEmpty());
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

TEST_F(DBusMenuTest, CallsWithWrongArgumentsAreErrors) {
    EXPECT_EQ(call("GetLayout", std::string("root"))->error(), invalidArguments);
    EXPECT_EQ(call("Event", std::int32_t{3})->error(), invalidArguments);
    EXPECT_EQ(call("Explode")->error(), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(DBusMenuTest, ExtremeIdsAreUnknown) {
    for (const std::int32_t id :
         {-1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(event(id, "clicked")->error(), invalidArguments);
    }
}

TEST_F(DBusMenuTest, WhenTheBusGoesTheMenuIsNoLongerShown) {
    event(0, "opened");

    stopBus();

    // Twice when the panel's end is told before the bus goes.
    EXPECT_TRUE(runUntil([this] { return list_.hides > 0; }));
}

TEST_F(DBusMenuTest, WhenTheBusComesBackTheMenuIsThereAgain) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(runUntilConnected());
    panel_ = &addPeer();

    EXPECT_THAT(ids(layout().second), ElementsAre(1, 2, 3));
}

} // namespace tarnwick
