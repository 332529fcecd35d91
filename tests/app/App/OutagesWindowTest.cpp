// The window "Tarnwick Outages": one, in the middle, and usable without a pointer.
#include "app/App/OutagesWindow.h"

#include "tests/app/OutagesView/OutagesForm.h"

#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tarnwick {

namespace {

using testing::ElementsAre;

constexpr int outagesFrame = 4;

class OutagesWindowTest : public testing::Test, protected test::OutagesForm {};

} // namespace

TEST_F(OutagesWindowTest, ItIsNamedAfterWhatItIs) {
    present();

    EXPECT_EQ(window.windowTitle(), "Tarnwick Outages");
    EXPECT_FALSE(window.windowIcon().isNull());
}

TEST_F(OutagesWindowTest, ItOpensInTheMiddleOfTheScreenAndStaysWhereItWasLeft) {
    present();
    const QPoint off = window.geometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(std::abs(off.x()), outagesFrame);
    EXPECT_LE(std::abs(off.y()), outagesFrame);

    window.move(11, 22);
    window.resize(900, 700);
    window.close();
    present();
    EXPECT_EQ(window.pos(), QPoint(11, 22));
    EXPECT_EQ(window.size(), QSize(900, 700));
}

TEST_F(OutagesWindowTest, AllOfItIsSeenWhereTheScreenIsLargeEnough) {
    present();

    const auto* const area = window.findChild<QScrollArea*>();
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
}

TEST_F(OutagesWindowTest, OnALowScreenItScrolls) {
    QFont font = window.font();
    font.setPixelSize(40);
    window.setFont(font);
    present();

    EXPECT_LE(window.height(), window.screen()->availableGeometry().height());
    EXPECT_LE(window.width(), window.screen()->availableGeometry().width());
    EXPECT_GT(window.findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0);
}

TEST_F(OutagesWindowTest, AHigherWindowShowsMoreOfTheList) {
    present();
    const int before = list().height();
    window.resize(window.width(), window.height() + 60);
    settle();

    EXPECT_EQ(list().height(), before + 60);
}

TEST_F(OutagesWindowTest, EscapeAndControlWCloseIt) {
    present();
    press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());

    present();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(OutagesWindowTest, ItHasTheShortcutsOfTheProgramsMenu) {
    present();
    press(Qt::Key_Q, Qt::ControlModifier);
    press(Qt::Key_Tab);
    press(Qt::Key_Comma, Qt::ControlModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(MenuItem::Id::quit, MenuItem::Id::settings));
}

} // namespace tarnwick
