// The rows of a panel's menu as the menu protocol has them.
#include "platform/panel/MenuProperties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MenuPropertiesTest, APlainRowHasOnlyItsLabel) {
    EXPECT_EQ(menuProperties({.id = 1, .label = "About"}), (MenuProperties{{"label", "About"}}));
}

TEST(MenuPropertiesTest, AnUnderscoreInALabelStaysAnUnderscore) {
    EXPECT_EQ(menuProperties({.id = 1, .label = "my_host_"}).at("label"), MenuPropertyValue("my__host__"));
}

TEST(MenuPropertiesTest, ASeparatorHasAType) {
    EXPECT_EQ(menuProperties({.id = 1, .isSeparator = true}), (MenuProperties{{"type", "separator"}}));
}

TEST(MenuPropertiesTest, WhatIsNotUsualIsMentioned) {
    const PanelMenuRow row{
        .id = 1, .label = "Quit", .iconName = "exit", .shortcutKey = "Q", .enabled = false, .visible = false};

    EXPECT_EQ(
        menuProperties(row), (MenuProperties{
                                 {"label", "Quit"},
                                 {"icon-name", "exit"},
                                 {"shortcut", MenuShortcut{std::vector<std::string>{"Control", "Q"}}},
                                 {"enabled", false},
                                 {"visible", false},
                             }));
}

TEST(MenuPropertiesTest, OnlyTheNamedPropertiesAreSelected) {
    const MenuProperties properties = menuProperties({.id = 1, .label = "Quit", .enabled = false});

    EXPECT_EQ(selected(properties, {"enabled", "type"}), (MenuProperties{{"enabled", false}}));
}

TEST(MenuPropertiesTest, WithoutNamesAllPropertiesAreSelected) {
    const MenuProperties properties = menuProperties({.id = 1, .label = "Quit", .enabled = false});

    EXPECT_EQ(selected(properties, {}), properties);
}

TEST(MenuPropertiesTest, RowsThatComeGoOrMoveAreAnotherLayout) {
    const PanelMenuRow first{.id = 1};
    const PanelMenuRow second{.id = 2};

    EXPECT_FALSE(haveSameLayout({first}, {first, second}));
    EXPECT_FALSE(haveSameLayout({first, second}, {second}));
    EXPECT_FALSE(haveSameLayout({first, second}, {second, first}));
    EXPECT_TRUE(haveSameLayout({first, second}, {first, second}));
}

TEST(MenuPropertiesTest, OnlyWhatHasChangedInChangedRowsIsUpdated) {
    const std::vector<PanelMenuRow> before{
        {.id = 1, .label = "42 ms"}, {.id = 2, .label = "Quit", .iconName = "exit"}};
    std::vector<PanelMenuRow> after = before;
    after[1].enabled = false;

    EXPECT_THAT(
        menuChanges(before, after), ElementsAre(MenuRowChange{.id = 2, .updated = {{"enabled", false}}}));
}

TEST(MenuPropertiesTest, WhatIsUsualAgainIsRemoved) {
    const std::vector<PanelMenuRow> before{{.id = 7, .label = "Change Host…", .visible = false}};
    std::vector<PanelMenuRow> after = before;
    after[0].visible = true;

    EXPECT_THAT(menuChanges(before, after), ElementsAre(MenuRowChange{.id = 7, .removed = {"visible"}}));
}

TEST(MenuPropertiesTest, RowsThatAreTheSameHaveNoChanges) {
    const std::vector<PanelMenuRow> rows{{.id = 1, .label = "42 ms"}};

    EXPECT_THAT(menuChanges(rows, rows), IsEmpty());
}

} // namespace tarnwick
