// The window that drops down from the status item: opening, closing, keys, choices.
#include "app/StatusMenuView/DropDown.h"

#include "app/StatusMenuView/DropDownWindow.h"
#include "app/StatusMenuView/MenuItemsView.h"
#include "app/StatusMenuView/MenuRow.h"
#include "app/StatusMenuView/StatusMenuView.h"
#include "platform/qt/Appearance.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/app/WatchedMonitor.h"

#include <QAccessible>
#include <QApplication>
#include <QDeadlineTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ScreenPoint click{400, 4};

class DropDownTest : public testing::Test, protected WatchedMonitor {
protected:
    ~DropDownTest() override {
        dropDown.close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void open() {
        dropDown.open(click);
        QApplication::processEvents();
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        send(QEvent::KeyPress, key, modifiers);
    }

    void release(int key) { send(QEvent::KeyRelease, key, Qt::NoModifier); }

    void send(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers) {
        ASSERT_TRUE(dropDown.isOpen());
        QWidget* const focused = dropDown.window()->focusWidget();
        QWidget* const target = focused != nullptr ? focused : dropDown.window();
        QKeyEvent event(type, key, modifiers);
        QApplication::sendEvent(target, &event);
    }

    void loseFocus() {
        QEvent event(QEvent::WindowDeactivate);
        QApplication::sendEvent(dropDown.window(), &event);
    }

    [[nodiscard]] std::vector<MenuRow*> rows() const { return dropDown.window()->items().visibleRows(); }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> texts;
        for (const MenuRow* row : rows()) {
            texts.push_back(row->item().title);
        }
        return texts;
    }

    [[nodiscard]] std::string highlighted() const {
        for (const MenuRow* row : rows()) {
            if (row->hasFocus()) {
                return row->item().title;
            }
        }
        return "";
    }

    test::StandardMenu menu;
    DropDown dropDown{monitor.observedReading(), menu.menu, loop};
};

} // namespace

TEST_F(DropDownTest, ItTellsTheMenuWhenItOpensAndWhenItHasClosed) {
    open();
    EXPECT_EQ(menu.opened, 1);
    EXPECT_EQ(menu.closed, 0);

    dropDown.close();
    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_EQ(menu.opened, 1);
    EXPECT_EQ(menu.closed, 1);
}

TEST_F(DropDownTest, ClosingAClosedWindowTellsNoObserver) {
    dropDown.close();

    EXPECT_EQ(menu.closed, 0);
}

TEST_F(DropDownTest, OpeningItAgainKeepsTheSameWindow) {
    open();
    const DropDownWindow* const window = dropDown.window();
    dropDown.open(std::nullopt);

    EXPECT_EQ(dropDown.window(), window);
    EXPECT_EQ(menu.opened, 1);
}

TEST_F(DropDownTest, ASecondClickCloses) {
    dropDown.toggle(click);
    ASSERT_TRUE(dropDown.isOpen());
    loop.advance(0.1);
    dropDown.toggle(click);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, AThirdClickOpensAgain) {
    dropDown.toggle(click);
    loop.advance(0.1);
    dropDown.toggle(click);
    loop.advance(0.1);
    dropDown.toggle(click);

    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(DropDownTest, AClickThatThePanelTellsTwiceCountsOnce) {
    dropDown.toggle(click);
    loop.advance(0.001);
    dropDown.toggle(click);
    EXPECT_TRUE(dropDown.isOpen());

    loop.advance(0.1);
    dropDown.toggle(click);
    dropDown.toggle(click);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, TheClickThatTookTheFocusAwayDoesNotOpenAgain) {
    open();
    loseFocus();
    ASSERT_FALSE(dropDown.isOpen());
    loop.advance(0.2);
    dropDown.toggle(click);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, TheNextClickAfterThatOpens) {
    open();
    loseFocus();
    dropDown.toggle(click);
    loop.advance(0.1);
    dropDown.toggle(click);

    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(DropDownTest, ALaterClickAfterLosingFocusOpens) {
    open();
    loseFocus();
    loop.advance(0.35);
    dropDown.toggle(click);

    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(DropDownTest, LosingFocusCloses) {
    open();
    ASSERT_TRUE(dropDown.window()->isActiveWindow());
    QWidget other;
    other.show();
    other.activateWindow();
    QApplication::processEvents();

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItTurnsDarkWithTheDesktopWhileItIsOpen) {
    const auto ground = [this] {
        const DropDownWindow& window = *dropDown.window();
        return dropDown.window()->grab().toImage().pixelColor(window.width() / 2, window.height() - 20);
    };
    Appearance::prefer(false);
    open();
    EXPECT_GT(ground().lightness(), 200);

    Appearance::prefer(true);
    QApplication::processEvents();
    EXPECT_LT(ground().lightness(), 60);
    Appearance::prefer(std::nullopt);
}

TEST_F(DropDownTest, EscapeCloses) {
    open();
    press(Qt::Key_Escape);

    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(DropDownTest, TheDesktopMayCloseItsWindow) {
    open();
    dropDown.window()->close();

    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_EQ(menu.closed, 1);
}

TEST_F(DropDownTest, ItsWindowDoesNotKeepTheProgramFromEnding) {
    open();
    QWidget* const window = dropDown.window();

    EXPECT_TRUE(window->close());
}

TEST_F(DropDownTest, AClickIntoItsShadowCloses) {
    open();
    QMouseEvent event(
        QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
        Qt::NoModifier);
    QApplication::sendEvent(dropDown.window(), &event);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItsWindowIsInsideTheScreenAtTheClick) {
    open();
    const QRect frame = dropDown.window()->geometry();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();

    // Its shadow may reach out.
    EXPECT_TRUE(available.contains(frame.adjusted(14, 14, -14, -14)));
    EXPECT_TRUE(frame.left() < 400 && frame.right() > 400);
}

TEST_F(DropDownTest, ItIsNamedAndFrameless) {
    open();

    EXPECT_EQ(dropDown.window()->windowTitle(), "Tarnwick");
    EXPECT_TRUE(dropDown.window()->windowFlags().testFlag(Qt::FramelessWindowHint));
}

TEST_F(DropDownTest, VisibleItemsStandBelowTheStatusInTheMenusOrder) {
    open();

    EXPECT_THAT(
        titles(),
        ElementsAre(
            "Reset Session Stats", "Check for Updates…", "Settings…", "About Tarnwick", "Quit Tarnwick"));
    const auto& children = dropDown.window()->children();
    const auto status = std::ranges::find_if(
        children, [](QObject* child) { return dynamic_cast<StatusMenuView*>(child) != nullptr; });
    ASSERT_NE(status, children.end());
    EXPECT_GT(dropDown.window()->items().y(), static_cast<QWidget*>(*status)->geometry().bottom());
}

TEST_F(DropDownTest, AnItemComesAndGoesWhileItIsOpen) {
    open();
    const int height = dropDown.window()->height();
    menu.menu.setHidden(Id::changeHost, false);
    loop.runPending();
    EXPECT_EQ(titles().front(), "Change Host…");
    EXPECT_GT(dropDown.window()->height(), height);

    menu.menu.setHidden(Id::changeHost, true);
    loop.runPending();
    EXPECT_EQ(titles().front(), "Reset Session Stats");
    EXPECT_EQ(dropDown.window()->height(), height);
}

TEST_F(DropDownTest, NothingIsHighlightedAtFirst) {
    open();

    EXPECT_EQ(highlighted(), "");
}

TEST_F(DropDownTest, DownBeginsAtTheTopAndUpAtTheBottom) {
    open();
    press(Qt::Key_Down);
    EXPECT_EQ(highlighted(), "Reset Session Stats");

    dropDown.close();
    open();
    press(Qt::Key_Up);
    EXPECT_EQ(highlighted(), "Quit Tarnwick");
}

TEST_F(DropDownTest, ArrowsGoAroundTheEnds) {
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Up);
    EXPECT_EQ(highlighted(), "Quit Tarnwick");

    press(Qt::Key_Down);
    EXPECT_EQ(highlighted(), "Reset Session Stats");
}

TEST_F(DropDownTest, TabGoesForwardAndBackward) {
    open();
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(highlighted(), "Check for Updates…");

    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(highlighted(), "Reset Session Stats");
}

TEST_F(DropDownTest, HomeAndEndGoToTheEnds) {
    open();
    press(Qt::Key_End);
    EXPECT_EQ(highlighted(), "Quit Tarnwick");

    press(Qt::Key_Home);
    EXPECT_EQ(highlighted(), "Reset Session Stats");
}

TEST_F(DropDownTest, DisabledItemsAreSteppedOver) {
    menu.menu.setEnabled(Id::checkForUpdates, false);
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Down);

    EXPECT_EQ(highlighted(), "Settings…");
}

TEST_F(DropDownTest, EnterAndSpaceChooseTheHighlightedItem) {
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        menu.chosen.clear();
        open();
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        press(key);

        EXPECT_THAT(menu.chosen, ElementsAre(Id::checkForUpdates)) << key;
    }
}

TEST_F(DropDownTest, EnterWithoutAHighlightChoosesNothing) {
    open();
    press(Qt::Key_Return);

    EXPECT_TRUE(dropDown.isOpen());
    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(DropDownTest, ItHasClosedWhenTheChosenItemActs) {
    bool wasOpen = true;
    menu.menu.onChoose = [&](Id) { wasOpen = dropDown.isOpen(); };
    open();
    press(Qt::Key_S);

    EXPECT_FALSE(wasOpen);
}

TEST_F(DropDownTest, AClickOnAnItemChoosesIt) {
    open();
    rows().back()->click();

    EXPECT_THAT(menu.chosen, ElementsAre(Id::quit));
    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ADisabledItemCannotBeChosen) {
    menu.menu.setEnabled(Id::checkForUpdates, false);
    open();
    rows()[1]->click();
    press(Qt::Key_U);

    EXPECT_THAT(menu.chosen, IsEmpty());
    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(DropDownTest, AnItemIsEnabledWhileItIsOpen) {
    menu.menu.setEnabled(Id::checkForUpdates, false);
    open();
    menu.menu.setEnabled(Id::checkForUpdates, true);
    loop.runPending();
    press(Qt::Key_U);

    EXPECT_THAT(menu.chosen, ElementsAre(Id::checkForUpdates));
}

TEST_F(DropDownTest, ALetterChoosesItsItemWithAndWithoutAlt) {
    open();
    press(Qt::Key_A);
    open();
    press(Qt::Key_A, Qt::AltModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(Id::about, Id::about));
}

TEST_F(DropDownTest, AHiddenItemsLetterChoosesNothing) {
    open();
    press(Qt::Key_H);

    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(DropDownTest, ShortcutsChooseTheirItems) {
    open();
    press(Qt::Key_Comma, Qt::ControlModifier);
    open();
    press(Qt::Key_Q, Qt::ControlModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(Id::settings, Id::quit));
}

TEST_F(DropDownTest, AShortcutsCharacterAloneIsNoShortcut) {
    open();
    press(Qt::Key_Comma);

    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(DropDownTest, WhileAltIsHeldTheAlternateStandsInItsPlace) {
    open();
    press(Qt::Key_Alt, Qt::AltModifier);
    EXPECT_EQ(titles().front(), "Reset All Time Stats…");
    EXPECT_EQ(rows().size(), 5U);

    release(Qt::Key_Alt);
    EXPECT_EQ(titles().front(), "Reset Session Stats");
}

TEST_F(DropDownTest, TheAlternateIsChosenWhileAltIsHeld) {
    open();
    press(Qt::Key_R);
    open();
    press(Qt::Key_Alt, Qt::AltModifier);
    press(Qt::Key_R, Qt::AltModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(Id::resetSession, Id::resetAllTime));
}

TEST_F(DropDownTest, AClickWithAltHeldChoosesTheAlternate) {
    open();
    press(Qt::Key_Alt, Qt::AltModifier);
    rows().front()->click();

    EXPECT_THAT(menu.chosen, ElementsAre(Id::resetAllTime));
}

TEST_F(DropDownTest, SwappingByAltKeepsTheHighlight) {
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Alt, Qt::AltModifier);

    EXPECT_EQ(highlighted(), "Reset All Time Stats…");
}

TEST_F(DropDownTest, ThePointerHighlightsWhatItIsOn) {
    open();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(rows()[2], &enter);
    EXPECT_EQ(highlighted(), "Settings…");

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(rows()[2], &leave);
    EXPECT_EQ(highlighted(), "");
}

TEST_F(DropDownTest, AssistiveTechnologySeesStatusAndItems) {
    watchFor(20.5);
    open();
    const QAccessibleInterface* const window = QAccessible::queryAccessibleInterface(dropDown.window());
    ASSERT_EQ(window->childCount(), 2);
    EXPECT_EQ(window->text(QAccessible::Name), "Tarnwick");
    EXPECT_EQ(window->child(0)->childCount(), 3);

    const QAccessibleInterface* const items = window->child(1);
    std::vector<std::string> names;
    for (int index = 0; index < items->childCount(); ++index) {
        const QAccessibleInterface* const item = items->child(index);
        if (!item->state().invisible) {
            names.push_back(item->text(QAccessible::Name).toStdString());
            EXPECT_EQ(item->role(), QAccessible::Button);
        }
    }
    EXPECT_EQ(names, titles());
}

TEST_F(DropDownTest, AssistiveTechnologyCanPressAnItem) {
    open();
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(rows()[3]);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    const QDeadlineTimer deadline(10'000);
    while (menu.chosen.empty() && !deadline.hasExpired()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    EXPECT_THAT(menu.chosen, ElementsAre(Id::about));
}

TEST_F(DropDownTest, ShortcutsAreWrittenBesideTheirItems) {
    EXPECT_EQ(shortcutText(','), "Ctrl+,");
    EXPECT_EQ(shortcutText('q'), "Ctrl+Q");
    EXPECT_EQ(shortcutText(0), "");
}

TEST_F(DropDownTest, OnceClosedNothingOfItIsLeft) {
    watchFor(20.5);
    const std::size_t timers = loop.timerCount();
    open();
    dropDown.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_THAT(QApplication::topLevelWidgets(), IsEmpty());
    EXPECT_EQ(loop.timerCount(), timers);
}

TEST_F(DropDownTest, AChangeOnItsWayWhenItClosesIsIgnored) {
    watchFor(20.5);
    open();
    monitor.resetSessionStats();
    menu.menu.setHidden(Id::changeHost, false);
    dropDown.close();
    loop.advance(2);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItFollowsTheColorsOfTheDesktop) {
    open();
    const QPoint inside(20, 20);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(250, 250, 250));
    dropDown.window()->setPalette(palette);
    EXPECT_EQ(dropDown.window()->grab().toImage().pixelColor(inside), QColor(250, 250, 250));

    palette.setColor(QPalette::Window, QColor(40, 42, 48));
    dropDown.window()->setPalette(palette);
    EXPECT_EQ(dropDown.window()->grab().toImage().pixelColor(inside), QColor(40, 42, 48));
}

} // namespace tarnwick
