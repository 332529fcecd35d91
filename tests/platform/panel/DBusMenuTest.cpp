// The menu that a panel draws, as the panel reads it.
#include "tests/platform/panel/DBusMenuTest.h"

#include <gmock/gmock.h>

#include <limits>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;

} // namespace

TEST_F(DBusMenuTest, TheLayoutHasAllRowsInTheirOrder) {
    const Layout root = layout().second;

    EXPECT_EQ(std::get<0>(root), 0);
    EXPECT_EQ(text(std::get<1>(root), "children-display"), "submenu");
    EXPECT_THAT(ids(root), ElementsAre(1, 2, 3));
}

TEST_F(DBusMenuTest, ARowHasItsProperties) {
    const Properties row = rowIn(layout().second, 2);

    EXPECT_EQ(text(row, "label"), "Quit");
    EXPECT_EQ(text(row, "icon-name"), "exit");
    EXPECT_THAT(std::get<std::vector<Names>>(row.at("shortcut")), ElementsAre(ElementsAre("Control", "Q")));
}

TEST_F(DBusMenuTest, ALabelThatIsNoTextDoesNotCostTheConnection) {
    list_.list[0].label = "host \xFF";

    EXPECT_EQ(text(rowIn(layout().second, 0), "label"), "host \uFFFD");
}

TEST_F(DBusMenuTest, ALayoutOfDepthZeroHasNoRows) {
    EXPECT_THAT(std::get<2>(layout(0, 0).second), IsEmpty());
}

TEST_F(DBusMenuTest, ALayoutHasOnlyThePropertiesThatAreAskedFor) {
    EXPECT_THAT(rowIn(layout(0, 1, {"icon-name"}).second, 2), ElementsAre(Key("icon-name")));
}

TEST_F(DBusMenuTest, TheLayoutOfARowIsTheRowAlone) {
    const Layout row = layout(3).second;

    EXPECT_EQ(std::get<0>(row), 3);
    EXPECT_EQ(text(std::get<1>(row), "label"), "Quit");
    EXPECT_THAT(std::get<2>(row), IsEmpty());
}

TEST_F(DBusMenuTest, ReadingTheLayoutIsTold) {
    int reads = 0;
    menu_.onRead = [&reads] { ++reads; };

    (void)layout();

    EXPECT_EQ(reads, 1);
}

TEST_F(DBusMenuTest, GroupPropertiesAreThoseOfTheNamedRowsThatExist) {
    const auto answer = call("GetGroupProperties", Ids{3, 99, 1}, Names{"label"});

    const auto rows = answer->value<std::vector<Row>>();

    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(std::get<0>(rows[0]), 3);
    EXPECT_EQ(text(std::get<1>(rows[1]), "label"), "Excellent · 23 ms");
}

TEST_F(DBusMenuTest, GroupPropertiesOfNoRowAreThoseOfAll) {
    const auto rows = call("GetGroupProperties", Ids(), Names())->value<std::vector<Row>>();

    EXPECT_EQ(rows.size(), 4U);
}

TEST_F(DBusMenuTest, APropertyIsReadByItsNameOrHasItsDefault) {
    const auto label = call("GetProperty", std::int32_t{3}, std::string("label"))->value<Value>();
    const auto enabled = call("GetProperty", std::int32_t{3}, std::string("enabled"))->value<Value>();

    EXPECT_EQ(std::get<std::string>(label), "Quit");
    EXPECT_TRUE(std::get<bool>(enabled));
}

TEST_F(DBusMenuTest, TheMenuHasTheProtocolsProperties) {
    const BusPeer::Target properties{target().destination, DBusMenu::path, "org.freedesktop.DBus.Properties"};
    const auto answer = panel_->call(properties, "GetAll", std::string("com.canonical.dbusmenu"));
    ASSERT_TRUE(runUntilAnswered(answer));

    const auto values = answer->value<Properties>();

    EXPECT_EQ(std::get<std::uint32_t>(values.at("Version")), 3U);
    EXPECT_EQ(text(values, "Status"), "normal");
    EXPECT_EQ(text(values, "TextDirection"), "ltr");
    EXPECT_THAT(std::get<Names>(values.at("IconThemePath")), ElementsAre("/icons"));
}

TEST_F(DBusMenuTest, CallsOfUnknownRowsAndPropertiesAreErrors) {
    for (const std::int32_t id :
         {99, -1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        SCOPED_TRACE(id);
        const std::vector<Event> events{{id, "clicked", noData, 0U}};
        EXPECT_EQ(call("GetLayout", id, std::int32_t{-1}, Names())->error(), invalidArguments);
        EXPECT_EQ(call("GetProperty", id, std::string("label"))->error(), invalidArguments);
        EXPECT_EQ(event(id, "clicked")->error(), invalidArguments);
        EXPECT_EQ(call("EventGroup", events)->error(), invalidArguments);
        EXPECT_EQ(call("AboutToShowGroup", Ids{id, id})->error(), invalidArguments);
    }
    EXPECT_EQ(call("GetProperty", std::int32_t{3}, std::string("color"))->error(), invalidArguments);
}

TEST_F(DBusMenuTest, CallsWithWrongArgumentsAreErrors) {
    EXPECT_EQ(call("GetLayout", std::string("root"))->error(), invalidArguments);
    EXPECT_EQ(call("Event", std::int32_t{3})->error(), invalidArguments);
    EXPECT_EQ(call("Explode")->error(), "org.freedesktop.DBus.Error.UnknownMethod");
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
