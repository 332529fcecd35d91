// The field for the ping interval, with its stepper.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QClipboard>

#include <gtest/gtest.h>

#include <memory>

namespace tarnwick {

namespace {

class IntervalFieldTest : public test::SettingsFormTest {
protected:
    void paste(const char* text) {
        QApplication::clipboard()->setText(text);
        press(Qt::Key_V, Qt::ControlModifier);
    }
};

} // namespace

TEST_F(IntervalFieldTest, TooShortAnIntervalBecomesTheShortest) {
    prefs.setPingInterval(5);
    present();
    submit(interval(), "0");

    EXPECT_EQ(prefs.pingInterval(), 1);
    EXPECT_EQ(interval().text(), "1");
}

TEST_F(IntervalFieldTest, TooLongAnIntervalBecomesTheLongest) {
    present();
    submit(interval(), "600");

    EXPECT_EQ(prefs.pingInterval(), 60);
    EXPECT_EQ(interval().text(), "60");
}

TEST_F(IntervalFieldTest, WhatIsNoNumberBringsTheIntervalBack) {
    prefs.setPingInterval(5);
    present();
    for (const char* const text : {"abc", "7s", "--", " ", "0x10"}) {
        submit(interval(), text);

        EXPECT_EQ(prefs.pingInterval(), 5) << text;
        EXPECT_EQ(interval().text(), "5") << text;
    }
}

TEST_F(IntervalFieldTest, AnEmptiedIntervalComesBack) {
    prefs.setPingInterval(5);
    present();
    interval().setFocus();
    interval().selectAll();
    press(Qt::Key_Backspace);
    EXPECT_EQ(interval().text(), "");
    press(Qt::Key_Tab);

    EXPECT_EQ(prefs.pingInterval(), 5);
    EXPECT_EQ(interval().text(), "5");
}

TEST_F(IntervalFieldTest, AnIntervalIsRoundedToWholeSeconds) {
    present();
    submit(interval(), "2.5");

    EXPECT_EQ(prefs.pingInterval(), 3);
    EXPECT_EQ(interval().text(), "3");
}

TEST_F(IntervalFieldTest, TheStepperGoesUpAndDownBySeconds) {
    present();
    interval().setFocus();
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.pingInterval(), 3);
    EXPECT_EQ(interval().text(), "3");

    press(Qt::Key_Down);
    EXPECT_EQ(prefs.pingInterval(), 2);
}

TEST_F(IntervalFieldTest, TheStepperEndsAtOneAndSixty) {
    present();
    interval().setFocus();
    press(Qt::Key_Down);
    EXPECT_EQ(prefs.pingInterval(), 1);

    prefs.setPingInterval(60);
    settle();
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.pingInterval(), 60);
}

TEST_F(IntervalFieldTest, ANewIntervalReschedulesThePings) {
    watchFor(10.5);
    present();
    submit(interval(), "5");
    const std::int64_t before = monitor.reading().session.sent;
    loop.advance(20);

    EXPECT_EQ(monitor.reading().session.sent - before, 4);
}

TEST_F(IntervalFieldTest, ItsUnitStandsBesideIt) {
    present();
    const QLabel* beside = nullptr;
    for (const QLabel* each : window.view().findChildren<QLabel*>()) {
        const QRect other = place(*each);
        const QRect field = place(interval());
        const bool isInTheSameRow = other.top() <= field.bottom() && other.bottom() >= field.top();
        if (each->isVisible() && isInTheSameRow && other.left() > field.right()) {
            ASSERT_EQ(beside, nullptr);
            beside = each;
        }
    }

    ASSERT_NE(beside, nullptr);
    EXPECT_EQ(beside->text(), "s");
}

TEST_F(IntervalFieldTest, AStepGoesOnFromTheIntervalThatHoldsWhenNoNumberIsTyped) {
    present();
    typeInto(interval(), "ab");
    prefs.setPingInterval(20);
    settle();
    press(Qt::Key_Up);

    EXPECT_EQ(prefs.pingInterval(), 21);
    EXPECT_EQ(interval().text(), "21");
}

// Steps from what is typed.

TEST_F(IntervalFieldTest, AStepDownGoesOnFromWhatIsTyped) {
    present();
    typeInto(interval(), "30");
    press(Qt::Key_Down);

    EXPECT_EQ(prefs.pingInterval(), 29);
    EXPECT_EQ(interval().text(), "29");
}

TEST_F(IntervalFieldTest, AStepUpGoesOnFromWhatIsTypedAlsoWhereTheLongestIntervalHolds) {
    prefs.setPingInterval(60);
    present();
    typeInto(interval(), "5");
    press(Qt::Key_Up);

    EXPECT_EQ(prefs.pingInterval(), 6);
    EXPECT_EQ(interval().text(), "6");
}

TEST_F(IntervalFieldTest, AStepBeyondATypedEndOfTheRangeSetsThatEnd) {
    present();
    typeInto(interval(), "60");
    press(Qt::Key_Up);

    EXPECT_EQ(prefs.pingInterval(), 60);
    EXPECT_EQ(interval().text(), "60");
}

TEST_F(IntervalFieldTest, AStepFromADraftStoresTheIntervalOnce) {
    present();
    typeInto(interval(), "30");
    defaults.forgetChanges();
    press(Qt::Key_Down);

    EXPECT_EQ(defaults.changes().size(), 1);
}

TEST_F(IntervalFieldTest, TheEndOfTheProgramCommitsNoDraft) {
    auto second = std::make_unique<SettingsWindow>(model, loop, menu.menu);
    second->present();
    settle();
    typeInto(*second->findChild<QSpinBox*>(), "30");
    second.reset();

    EXPECT_EQ(prefs.pingInterval(), 1);
}

// Edit keys.

TEST_F(IntervalFieldTest, WhatIsCutGoesToTheClipboard) {
    prefs.setPingInterval(25);
    present();
    interval().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);

    EXPECT_EQ(interval().text(), "");
    EXPECT_EQ(QApplication::clipboard()->text(), "25");
}

TEST_F(IntervalFieldTest, WhatIsPastedIsADraftLikeAnyOther) {
    present();
    interval().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    paste("25");
    EXPECT_EQ(interval().text(), "25");
    EXPECT_EQ(prefs.pingInterval(), 1);

    press(Qt::Key_Return);
    EXPECT_EQ(prefs.pingInterval(), 25);
}

TEST_F(IntervalFieldTest, WhatWasPastedCanBeUndoneAndRedone) {
    present();
    interval().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    paste("25");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(interval().text(), "1");

    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(interval().text(), "25");
}

} // namespace tarnwick
