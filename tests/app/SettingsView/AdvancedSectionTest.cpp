// The settings that few people need: shown on request.
#include "app/SettingsView/AdvancedSection.h"

#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QWheelEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr auto mistake = "Must be 0.01 to 3600 seconds.";

class AdvancedSectionTest : public test::SettingsFormTest {
protected:
    [[nodiscard]] QPushButton& heading() { return control<QPushButton>("Advanced"); }

    [[nodiscard]] QLineEdit& timeout() { return control<QLineEdit>("Ping Time-Out"); }

    [[nodiscard]] QComboBox& form() { return control<QComboBox>("Form in the Panel"); }

    [[nodiscard]] QCheckBox& history() { return control<QCheckBox>("Keep a History"); }

    [[nodiscard]] QPushButton& clearHistory() { return control<QPushButton>("Clear History…"); }

    [[nodiscard]] static std::vector<std::string> titles(const QComboBox& picker) {
        std::vector<std::string> texts;
        texts.reserve(static_cast<std::size_t>(picker.count()));
        for (int index = 0; index < picker.count(); ++index) {
            texts.push_back(picker.itemText(index).toStdString());
        }
        return texts;
    }

    void expectRefused(const char* text) {
        submit(timeout(), text);
        EXPECT_EQ(prefs.pingTimeout(), 4) << text;
        EXPECT_EQ(timeout().text(), text);
        EXPECT_THAT(labels(), HasSubstr(mistake)) << text;
        EXPECT_EQ(timeout().accessibleDescription(), mistake) << text;
    }

    void presentOpened() {
        present();
        heading().click();
        settle();
    }
};

} // namespace

// Opening and closing.

TEST_F(AdvancedSectionTest, ItIsClosedAtFirst) {
    present();

    EXPECT_TRUE(heading().isVisible());
    EXPECT_FALSE(timeout().isVisible());
    EXPECT_THAT(labels(), Not(HasSubstr("time-out")));
}

TEST_F(AdvancedSectionTest, AClickOpensItAtTheEndOfTheFormAndAnotherClosesIt) {
    present();
    const int before = window.height();
    const QRect ofAlerts = place(alerts());
    QTest::mouseClick(&heading(), Qt::LeftButton);
    settle();

    EXPECT_TRUE(timeout().isVisible());
    EXPECT_GT(window.height(), before);
    EXPECT_EQ(place(alerts()), ofAlerts);
    EXPECT_GT(place(timeout()).top(), place(launchAtLogin()).bottom());
    EXPECT_LT(place(form()).bottom(), place(restore()).top());
    EXPECT_THAT(labels(), HasSubstr("A ping without an answer counts as lost after the time-out."));

    QTest::mouseClick(&heading(), Qt::LeftButton);
    settle();
    EXPECT_FALSE(timeout().isVisible());
    EXPECT_EQ(window.height(), before);
}

TEST_F(AdvancedSectionTest, KeysOpenItAndLeadToItsRows) {
    present();
    press(Qt::Key_M, Qt::AltModifier);
    EXPECT_EQ(focused(), "Host to Ping"); // closed, it takes no letters
    press(Qt::Key_V, Qt::AltModifier);
    ASSERT_TRUE(QTest::qWaitFor([this] { return timeout().isVisible(); }));
    press(Qt::Key_M, Qt::AltModifier);
    EXPECT_EQ(focused(), "Ping Time-Out");
    press(Qt::Key_F, Qt::AltModifier);
    EXPECT_EQ(focused(), "Form in the Panel");

    heading().setFocus();
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        const bool wasOpen = timeout().isVisible();
        press(key);
        EXPECT_NE(timeout().isVisible(), wasOpen);
    }
}

TEST_F(AdvancedSectionTest, AssistiveTechnologyLearnsWhetherItIsOpen) {
    present();
    QAccessibleInterface& found = accessible(heading());
    EXPECT_EQ(found.role(), QAccessible::Button);
    EXPECT_EQ(found.text(QAccessible::Name), "Advanced");
    EXPECT_TRUE(found.state().collapsed);
    EXPECT_FALSE(found.state().expanded);

    found.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    EXPECT_TRUE(found.state().expanded);
    EXPECT_EQ(accessible(timeout()).role(), QAccessible::EditableText);
    EXPECT_EQ(accessible(form()).relations(QAccessible::Label).size(), 1);
    EXPECT_TRUE(accessible(timeout()).text(QAccessible::Description).startsWith("A ping without"));
}

TEST_F(AdvancedSectionTest, WhileTheWindowLivesItStaysAsItWasLeft) {
    presentOpened();
    window.close();
    present();

    EXPECT_TRUE(timeout().isVisible());
}

// The time-out.

TEST_F(AdvancedSectionTest, ATimeoutHoldsWhenItIsEntered) {
    presentOpened();
    EXPECT_EQ(timeout().text(), "4");
    typeInto(timeout(), "2.5");
    EXPECT_EQ(prefs.pingTimeout(), 4);
    press(Qt::Key_Return);
    EXPECT_EQ(prefs.pingTimeout(), 2.5);

    typeInto(timeout(), "3600");
    press(Qt::Key_Tab);
    EXPECT_EQ(prefs.pingTimeout(), 3600);
    EXPECT_EQ(timeout().text(), "3600");
}

TEST_F(AdvancedSectionTest, ATimeoutThatCannotBeMeantIsRefusedInWords) {
    presentOpened();
    for (const char* const text : {"0", "0.009", "-1", "3601", "four", "1,000", "inf", "nan"}) {
        expectRefused(text);
    }

    submit(timeout(), "0.01");
    EXPECT_EQ(prefs.pingTimeout(), 0.01);
    EXPECT_THAT(labels(), Not(HasSubstr(mistake)));
}

TEST_F(AdvancedSectionTest, ARefusedTimeoutGivesWayWhenTheFieldIsLeft) {
    presentOpened();
    submit(timeout(), "0");
    press(Qt::Key_Tab);

    EXPECT_EQ(timeout().text(), "4");
    EXPECT_THAT(labels(), Not(HasSubstr(mistake)));
}

TEST_F(AdvancedSectionTest, AnEmptyFieldIsNoMistakeAndGivesWay) {
    presentOpened();
    typeInto(timeout(), " ");
    EXPECT_THAT(labels(), Not(HasSubstr(mistake)));
    press(Qt::Key_Return);

    EXPECT_EQ(timeout().text(), "4");
}

TEST_F(AdvancedSectionTest, TheMistakeMovesNothing) {
    useUsualFont();
    presentOpened();
    const QRect before = place(form());
    submit(timeout(), "0");

    EXPECT_EQ(place(form()), before);
}

TEST_F(AdvancedSectionTest, TheTimeoutIsWrittenAsTheUserWritesNumbers) {
    QLocale::setDefault(QLocale("de_DE"));
    prefs.setPingTimeout(1234.5);
    SettingsView view(model, loop, nullptr);
    view.show();
    QLineEdit* field = nullptr;
    for (QLineEdit* each : view.findChildren<QLineEdit*>()) {
        field = each->accessibleName() == "Ping Time-Out" ? each : field;
    }
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), "1234,5");

    for (const auto& [text, seconds] : {std::pair{"2,5", 2.5}, std::pair{"0.5", 0.5}}) {
        field->setText(text);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_EQ(prefs.pingTimeout(), seconds) << text;
    }
}

TEST_F(AdvancedSectionTest, EscapeDropsATypedTimeoutAndClosingKeepsIt) {
    presentOpened();
    typeInto(timeout(), "7");
    press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(prefs.pingTimeout(), 4);

    present();
    typeInto(timeout(), "8");
    window.close();
    EXPECT_EQ(prefs.pingTimeout(), 8);
}

// The form.

TEST_F(AdvancedSectionTest, APickedFormHoldsAtOnce) {
    presentOpened();
    EXPECT_THAT(titles(form()), ElementsAre("Automatic", "Text Beside Icon", "Wide Image", "Square Image"));

    form().setFocus();
    press(Qt::Key_End);
    EXPECT_EQ(prefs.panelForm(), StatusItem::Form::square);
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.panelForm(), StatusItem::Form::wide);
}

TEST_F(AdvancedSectionTest, APickedColorHoldsAtOnce) {
    presentOpened();
    EXPECT_THAT(titles(panelInk()), ElementsAre("Automatic", "Light", "Dark"));

    panelInk().setFocus();
    press(Qt::Key_Down);
    EXPECT_EQ(prefs.panelInk(), StatusItem::InkChoice::light);
}

TEST_F(AdvancedSectionTest, TheWheelPassesOverItsPickers) {
    presentOpened();
    for (QComboBox* picker : {&form(), &panelInk()}) {
        const QPointF middle = picker->rect().center();
        QWheelEvent event(
            middle, picker->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
            Qt::NoScrollPhase, false);
        QApplication::sendEvent(picker, &event);
        EXPECT_EQ(picker->currentIndex(), 0);
        EXPECT_EQ(picker->focusPolicy(), Qt::StrongFocus);
    }
}

// With the rest of the form.

TEST_F(AdvancedSectionTest, ItFollowsTheSettings) {
    presentOpened();
    prefs.setPingTimeout(9);
    prefs.setPanelForm(StatusItem::Form::label);
    prefs.setPanelInk(StatusItem::InkChoice::dark);
    settle();

    EXPECT_EQ(timeout().text(), "9");
    EXPECT_EQ(form().currentText(), "Text Beside Icon");
    EXPECT_EQ(panelInk().currentText(), "Dark");
}

TEST_F(AdvancedSectionTest, RestoringTheDefaultsAndUndoCoverIt) {
    prefs.setPingTimeout(9);
    prefs.setPanelForm(StatusItem::Form::wide);
    prefs.setPanelInk(StatusItem::InkChoice::light);
    presentOpened();
    typeInto(timeout(), "12");
    QTest::mouseClick(&restore(), Qt::LeftButton);
    settle();
    EXPECT_EQ(timeout().text(), "4");
    EXPECT_EQ(form().currentText(), "Automatic");
    EXPECT_EQ(panelInk().currentText(), "Automatic");

    control<QPushButton>("Undo").click();
    settle();
    EXPECT_EQ(timeout().text(), "9");
    EXPECT_EQ(form().currentText(), "Wide Image");
    EXPECT_EQ(panelInk().currentText(), "Light");
    EXPECT_EQ(prefs.pingTimeout(), 9);
}

// The history.

TEST_F(AdvancedSectionTest, TheHistoryIsSwitchedAtOnceAndSaysWhatIsKeptAndWhere) {
    model.historyFile = "~/history";
    SettingsWindow other(model, loop, menu.menu); // the place is known before a window is made
    presentOpened();
    EXPECT_TRUE(history().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Latency, loss and outages of two years"));
    EXPECT_THAT(labels(), HasSubstr("The history never leaves this computer"));

    QTest::mouseClick(&history(), Qt::LeftButton);
    EXPECT_FALSE(prefs.keepsHistory());
    press(Qt::Key_K, Qt::AltModifier);
    EXPECT_TRUE(prefs.keepsHistory());

    bool isTold = false;
    for (const QLabel* each : other.findChildren<QLabel*>()) {
        isTold = isTold || each->text().contains("only you can read, ~/history.");
    }
    EXPECT_TRUE(isTold);
}

TEST_F(AdvancedSectionTest, TheHistorysSwitchFollowsTheSetting) {
    presentOpened();
    prefs.setKeepsHistory(false);
    settle();

    EXPECT_FALSE(history().isChecked());
}

TEST_F(AdvancedSectionTest, TheHistoryIsClearedByAButton) {
    int questions = 0;
    presentOpened();
    clearHistory().click(); // nothing takes it
    model.clearHistory = [&questions] { ++questions; };
    clearHistory().click();

    EXPECT_EQ(questions, 1);
    EXPECT_TRUE(prefs.keepsHistory());
    EXPECT_EQ(accessible(clearHistory()).text(QAccessible::Name), "Clear History…");
}

TEST_F(AdvancedSectionTest, WhatIsLeftOfTheHistoryIsToldInThePlaceOfTheHint) {
    presentOpened();
    model.setHistoryProblem("Something may be left");
    settle();
    EXPECT_THAT(labels(), HasSubstr("Something may be left"));
    EXPECT_THAT(labels(), Not(HasSubstr("of two years")));
    EXPECT_EQ(history().accessibleDescription(), "Something may be left");
    EXPECT_EQ(label("Something").palette().color(QPalette::WindowText), ViewStyle(window).colors().bad());

    model.setHistoryProblem("");
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("may be left")));
    EXPECT_EQ(history().accessibleDescription(), "Latency, loss and outages of two years");
    EXPECT_EQ(label("Latency").palette().color(QPalette::WindowText), ViewStyle(window).colors().secondary());
}

// The place among the applications of a program that was unpacked.

TEST_F(AdvancedSectionTest, AnInstalledProgramHasNoRowForItsPlaceAmongTheApplications) {
    presentOpened();

    EXPECT_THAT(labels(), Not(HasSubstr("Your Applications")));
}

TEST_F(AdvancedSectionTest, AProgramThatIsNotAmongTheApplicationsIsAddedByAButton) {
    std::vector<bool> answers;
    model.answerApplications = [&answers](bool adds) { answers.push_back(adds); };
    model.setApplications({.haveIt = false, .problem = ""});
    presentOpened();

    control<QPushButton>("Add Tarnwick").click();

    EXPECT_THAT(labels(), HasSubstr("Your Applications"));
    EXPECT_THAT(answers, ElementsAre(true));
}

TEST_F(AdvancedSectionTest, AProgramAmongTheApplicationsIsTakenOutByAButton) {
    int questions = 0;
    model.uninstall = [&questions] { ++questions; };
    model.setApplications({.haveIt = false, .problem = ""});
    presentOpened();
    model.setApplications({.haveIt = true, .problem = ""});
    settle();

    auto& button = control<QPushButton>("Uninstall…");
    EXPECT_EQ(button.accessibleName(), "Uninstall…");
    button.click();

    EXPECT_EQ(questions, 1);
}

TEST_F(AdvancedSectionTest, WhatWentWrongWithThePlaceAmongTheApplicationsIsTold) {
    model.setApplications({.haveIt = true, .problem = "Can’t change it"});
    presentOpened();

    EXPECT_THAT(labels(), HasSubstr("Can’t change it"));
}

} // namespace tarnwick
