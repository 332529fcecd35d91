// Highlighting and choosing in the window that drops down, by keys, pointer and assistive technology.
#include "tests/app/StatusMenuView/DropDownTest.h"

#include "tests/support/CaseName.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QMouseEvent>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;
using testing::ElementsAre;
using testing::IsEmpty;

/// Keys, and what they lead to.
struct Highlighting {
    std::string name;
    std::vector<QKeyCombination> keys;
    std::string highlighted;

    friend void PrintTo(const Highlighting& shown, std::ostream* out) { *out << shown.name; }
};

class DropDownHighlight : public DropDownTest, public testing::WithParamInterface<Highlighting> {};

struct Choice {
    std::string name;
    std::vector<QKeyCombination> keys;
    std::vector<Id> chosen;
    bool closes = true;

    friend void PrintTo(const Choice& shown, std::ostream* out) { *out << shown.name; }
};

class DropDownChoice : public DropDownTest, public testing::WithParamInterface<Choice> {};

} // namespace

TEST_P(DropDownHighlight, FollowsTheKeys) {
    open();
    for (const QKeyCombination key : GetParam().keys) {
        press(key);
    }

    EXPECT_EQ(highlighted(), GetParam().highlighted);
}

INSTANTIATE_TEST_SUITE_P(
    DropDownTest, DropDownHighlight,
    testing::Values(
        Highlighting{"NothingAtFirst", {}, ""},
        Highlighting{"DownBeginsAtTheTop", {Qt::Key_Down}, "Reset Session Stats"},
        Highlighting{"UpBeginsAtTheBottom", {Qt::Key_Up}, "Quit Tarnwick"},
        Highlighting{"UpGoesAroundTheTop", {Qt::Key_Down, Qt::Key_Up}, "Quit Tarnwick"},
        Highlighting{"DownGoesAroundTheBottom", {Qt::Key_Up, Qt::Key_Down}, "Reset Session Stats"},
        Highlighting{"TabGoesForward", {Qt::Key_Tab, Qt::Key_Tab}, "Pause for an Hour"},
        Highlighting{
            "ShiftTabGoesBackward",
            {Qt::Key_Tab, Qt::Key_Tab, Qt::ShiftModifier | Qt::Key_Backtab},
            "Reset Session Stats"},
        Highlighting{"EndGoesToTheBottom", {Qt::Key_End}, "Quit Tarnwick"},
        Highlighting{"HomeGoesToTheTop", {Qt::Key_End, Qt::Key_Home}, "Reset Session Stats"},
        Highlighting{"PageDownGoesToTheBottom", {Qt::Key_PageDown}, "Quit Tarnwick"},
        Highlighting{"PageUpGoesToTheTop", {Qt::Key_End, Qt::Key_PageUp}, "Reset Session Stats"},
        Highlighting{
            "SwappingByAltKeepsIt", {Qt::Key_Down, Qt::AltModifier | Qt::Key_Alt}, "Reset All Time Stats…"},
        Highlighting{
            "SwappingByShiftKeepsIt",
            {Qt::Key_Down, Qt::ShiftModifier | Qt::Key_Shift},
            "Reset All Time Stats…"}),
    test::caseName);

TEST_P(DropDownChoice, IsMadeByKeys) {
    open();
    for (const QKeyCombination key : GetParam().keys) {
        press(key);
    }

    EXPECT_EQ(menu.chosen, GetParam().chosen);
    EXPECT_EQ(dropDown.isOpen(), !GetParam().closes);
}

INSTANTIATE_TEST_SUITE_P(
    DropDownTest, DropDownChoice,
    testing::Values(
        Choice{"Return", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, {Id::pause}},
        Choice{"Enter", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Enter}, {Id::pause}},
        Choice{"Space", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Space}, {Id::pause}},
        Choice{"ReturnWithoutAHighlight", {Qt::Key_Return}, {}, false},
        Choice{"Escape", {Qt::Key_Escape}, {}}, Choice{"Letter", {Qt::Key_A}, {Id::about}},
        Choice{"LetterWithAlt", {Qt::AltModifier | Qt::Key_A}, {Id::about}},
        Choice{"LetterOfAHiddenItem", {Qt::Key_H}, {}, false},
        Choice{"ShortcutOfSettings", {Qt::ControlModifier | Qt::Key_Comma}, {Id::settings}},
        Choice{"ShortcutOfQuit", {Qt::ControlModifier | Qt::Key_Q}, {Id::quit}},
        Choice{"ShortcutWithoutControl", {Qt::Key_Comma}, {}, false},
        Choice{"LetterOfTheItemWithAnAlternate", {Qt::Key_R}, {Id::resetSession}},
        Choice{
            "LetterOfTheAlternate",
            {Qt::AltModifier | Qt::Key_Alt, Qt::AltModifier | Qt::Key_R},
            {Id::resetAllTime}},
        Choice{
            "LetterOfTheAlternateWithShift",
            {Qt::ShiftModifier | Qt::Key_Shift, Qt::ShiftModifier | Qt::Key_R},
            {Id::resetAllTime}}),
    test::caseName);

TEST_F(DropDownTest, DisabledItemsAreSteppedOver) {
    menu.menu.setEnabled(Id::checkForUpdates, false);
    open();
    for (int row = 0; row < 4; ++row) {
        press(Qt::Key_Down);
    }

    EXPECT_EQ(highlighted(), "Settings…");
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
    rows()[3]->click();
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

TEST_F(DropDownTest, WhileAltOrShiftIsHeldTheAlternateStands) {
    open();
    for (const QKeyCombination keys : {Qt::AltModifier | Qt::Key_Alt, Qt::ShiftModifier | Qt::Key_Shift}) {
        press(keys);
        EXPECT_EQ(titles().front(), "Reset All Time Stats…");
        EXPECT_EQ(rows().size(), 7U);

        release(keys.key());
        EXPECT_EQ(titles().front(), "Reset Session Stats");
    }
}

TEST_F(DropDownTest, TheAlternateStandsUntilTheLastKeyIsReleased) {
    open();
    press(Qt::AltModifier | Qt::Key_Alt);
    press(Qt::AltModifier | Qt::ShiftModifier | Qt::Key_Shift);

    send(QEvent::KeyRelease, Qt::AltModifier | Qt::ShiftModifier | Qt::Key_Alt);
    EXPECT_EQ(titles().front(), "Reset All Time Stats…");

    release(Qt::Key_Shift);
    EXPECT_EQ(titles().front(), "Reset Session Stats");
}

TEST_F(DropDownTest, AClickWithAltOrShiftHeldChoosesTheAlternate) {
    for (const QKeyCombination keys : {Qt::AltModifier | Qt::Key_Alt, Qt::ShiftModifier | Qt::Key_Shift}) {
        open();
        press(keys);
        rows().front()->click();
    }

    EXPECT_THAT(menu.chosen, ElementsAre(Id::resetAllTime, Id::resetAllTime));
}

TEST_F(DropDownTest, ThePointerTellsOfShiftWithoutAKey) {
    open();
    QMouseEvent move(
        QEvent::MouseMove, QPointF(5, 5), QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::ShiftModifier);
    QApplication::sendEvent(rows().front(), &move);

    EXPECT_EQ(titles().front(), "Reset All Time Stats…");
}

TEST_F(DropDownTest, ThePointerHighlightsWhatItIsOn) {
    open();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(rows()[4], &enter);
    EXPECT_EQ(highlighted(), "Settings…");

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(rows()[4], &leave);
    EXPECT_EQ(highlighted(), "");
}

TEST_F(DropDownTest, AssistiveTechnologyCanPressAnItem) {
    open();
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(rows()[5]);
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

} // namespace tarnwick
