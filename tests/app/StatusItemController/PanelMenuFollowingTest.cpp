// When the menu's text follows the monitor: while a panel shows or reads it.
#include "tests/app/StatusItemController/PanelMenuTextTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

TEST_F(PanelMenuTextTest, TheMenuIsOpenFromItsShowingToItsHiding) {
    showMenu();
    int opened = 0;
    int closed = 0;
    menu->onWillOpen = [&opened] { ++opened; };
    menu->onDidClose = [&closed] { ++closed; };

    panelMenu->didShow();
    EXPECT_EQ(std::pair(opened, closed), std::pair(1, 0));

    panelMenu->didHide();
    EXPECT_EQ(std::pair(opened, closed), std::pair(1, 1));

    panelMenu->didHide();
    EXPECT_EQ(std::pair(opened, closed), std::pair(1, 1));

    panelMenu->didShow();
    EXPECT_EQ(std::pair(opened, closed), std::pair(2, 1));

    panelMenu.reset();
    EXPECT_EQ(std::pair(opened, closed), std::pair(2, 2));
}

TEST_F(PanelMenuTextTest, IsNotRefreshedWhileItIsHidden) {
    showMenu();
    watchFor(30.5);

    EXPECT_EQ(changes, 0);
}

TEST_F(PanelMenuTextTest, IsRefreshedWhileItIsShown) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    changes = 0;

    answerAfter(0.077);
    loop.advance(3);

    EXPECT_GE(changes, 1);
    EXPECT_THAT(panelMenu->rows().front().label, testing::HasSubstr("77 ms"));
}

TEST_F(PanelMenuTextTest, TellsNothingOfAReadingWithTheSameRows) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    ASSERT_TRUE(goDown());
    changes = 0;

    loop.advance(60);

    // Every eight seconds or so the chart begins a block, which then turns out lost. Pings come every second.
    EXPECT_GE(changes, 7);
    EXPECT_LE(changes, 20);
}

TEST_F(PanelMenuTextTest, IsNotRefreshedAfterItHasBeenClosed) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    panelMenu->didHide();
    changes = 0;

    loop.advance(30);

    EXPECT_EQ(changes, 0);
}

TEST_F(PanelMenuTextTest, ChangeHostComesAndGoesWhileItIsShown) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    ASSERT_TRUE(goDown());
    EXPECT_FALSE(menuItem(MenuItem::Id::changeHost)->hidden);

    answerAfter(0.02);
    loop.advance(10);

    EXPECT_TRUE(menuItem(MenuItem::Id::changeHost)->hidden);
}

TEST_F(PanelMenuTextTest, APanelThatOnlyReadsItDoesNotOpenTheMenu) {
    showMenu();
    watchFor(40.5);
    panelMenu->willRead();
    lose(4, 32);

    loop.advance(PanelMenuText::readingTime - 1);

    EXPECT_NE(title().find('%'), std::string::npos);
}

TEST_F(PanelMenuTextTest, WhileAPanelShowsItTheTitleKeepsItsWidth) {
    showMenu();
    watchFor(40.5);
    panelMenu->didShow();
    lose(4, 32);

    loop.advance(PanelMenuText::readingTime - 1);

    EXPECT_EQ(title().find('%'), std::string::npos);
}

TEST_F(PanelMenuTextTest, IsRefreshedForAWhileAfterAPanelHasAskedForIt) {
    showMenu();
    watchFor(5.5);
    panelMenu->willRead();
    loop.advance(PanelMenuText::readingTime - 3);
    changes = 0;

    loop.advance(2);

    EXPECT_GE(changes, 1);
}

TEST_F(PanelMenuTextTest, IsNotRefreshedForLongAfterAPanelHasAskedForIt) {
    showMenu();
    watchFor(5.5);
    panelMenu->willRead();
    loop.advance(PanelMenuText::readingTime + 0.5);
    changes = 0;

    loop.advance(30);

    EXPECT_EQ(changes, 0);
}

TEST_F(PanelMenuTextTest, AskingForAMenuThatIsShownDoesNotEndIt) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    panelMenu->willRead();
    loop.advance(PanelMenuText::readingTime + 1);
    changes = 0;

    loop.advance(3);

    EXPECT_GE(changes, 1);
}

TEST_F(PanelMenuTextTest, APanelThatNeverSaysThatItHasClosedItIsNotBelievedForever) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    loop.advance(PanelMenuText::longestShown + 0.5);
    changes = 0;

    loop.advance(60);

    EXPECT_EQ(changes, 0);
}

TEST_F(PanelMenuTextTest, ShownTwiceAndClosedOnceItIsClosed) {
    showMenu();
    watchFor(5.5);
    panelMenu->didShow();
    panelMenu->didShow();
    panelMenu->didHide();
    changes = 0;

    loop.advance(30);

    EXPECT_EQ(changes, 0);
}

} // namespace tarnwick
