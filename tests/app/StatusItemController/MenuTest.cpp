// The menu as a model: what its observers are told, what can be chosen.
#include "app/StatusItemController/Menu.h"

#include "tests/simulation/ChangeCounter.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;

class MenuTest : public testing::Test {
protected:
    MenuTest() {
        menu.onChoose = [this](Id id) { chosen.push_back(id); };
        menu.onWillOpen = [this] { ++opened; };
        menu.onDidClose = [this] { ++closed; };
    }

    Menu menu{{{.id = Id::header}, {.id = Id::about, .title = "About"}, {.id = Id::quit, .title = "Quit"}}};
    std::vector<Id> chosen;
    int opened = 0;
    int closed = 0;
};

} // namespace

TEST_F(MenuTest, ObserversAreToldOfRealChangesOnly) {
    const simulation::ChangeCounter<Menu::Items> counter([this] { return menu.items(); });

    menu.setHidden(Id::about, true);
    menu.setHidden(Id::about, true);
    menu.setEnabled(Id::quit, true);
    menu.setHidden(Id::settings, true);

    EXPECT_EQ(counter.wakeUps(), 1);
}

TEST_F(MenuTest, AnItemThatIsShownAndEnabledCanBeChosen) {
    menu.choose(Id::quit);

    EXPECT_EQ(chosen, std::vector{Id::quit});
}

TEST_F(MenuTest, HiddenDisabledAndAbsentItemsCannotBeChosen) {
    menu.setHidden(Id::about, true);
    menu.setEnabled(Id::quit, false);

    menu.choose(Id::about);
    menu.choose(Id::quit);
    menu.choose(Id::settings);

    EXPECT_TRUE(chosen.empty());
}

TEST_F(MenuTest, ShownInTwoPlacesItIsOpenUntilTheLastOneHasClosed) {
    menu.willOpen();
    menu.willOpen();
    menu.didClose();
    EXPECT_EQ(closed, 0);

    menu.didClose();

    EXPECT_EQ(opened, 1);
    EXPECT_EQ(closed, 1);
}

TEST_F(MenuTest, ReadersCanHaveItBroughtUpToDateWithoutOpeningIt) {
    menu.onRefresh = [this] { menu.setEnabled(Id::quit, false); };

    menu.refresh();

    EXPECT_FALSE(menu.items().back().enabled);
    EXPECT_EQ(opened, 0);
}

TEST_F(MenuTest, ClosingAClosedMenuTellsNoObserver) {
    menu.didClose();

    EXPECT_EQ(closed, 0);
    menu.willOpen();
    EXPECT_EQ(opened, 1);
}

} // namespace tarnwick
