// What holds for everything typed into the settings, whichever field it is typed into.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QContextMenuEvent>
#include <QTimer>

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

/// A field, and texts for it. Each text means another value.
struct DraftField {
    std::string name;
    const char* label;
    const char* initial;   ///< what the settings hold at first
    const char* typed;     ///< by the user
    const char* untidy;    ///< the same value in another notation
    const char* worthless; ///< a text without a value
    const char* elsewhere; ///< what another program or window sets

    friend void PrintTo(const DraftField& field, std::ostream* out) { *out << field.name; }
};

class DraftContract : public test::SettingsFormTest, public testing::WithParamInterface<DraftField> {
protected:
    DraftContract() {
        resolve("one.example", "192.0.2.1");
        resolve("two.example", "192.0.2.2");
        present();
    }

    [[nodiscard]] bool isHost() const { return GetParam().name == "Host"; }

    [[nodiscard]] QWidget& field() {
        return isHost() ? static_cast<QWidget&>(host()) : static_cast<QWidget&>(interval());
    }

    [[nodiscard]] QWidget& otherField() {
        return isHost() ? static_cast<QWidget&>(interval()) : static_cast<QWidget&>(host());
    }

    [[nodiscard]] std::string shown() { return (isHost() ? host().text() : interval().text()).toStdString(); }

    /// The value that holds, as the field shows it.
    [[nodiscard]] std::string setting() const {
        return isHost() ? prefs.hostname() : std::to_string(static_cast<int>(prefs.pingInterval()));
    }

    void changeElsewhere() {
        if (isHost()) {
            prefs.setHostname(GetParam().elsewhere);
        } else {
            prefs.setPingInterval(std::stoi(GetParam().elsewhere));
        }
    }
};

} // namespace

TEST_P(DraftContract, TheFieldBeginsWithTheSetting) {
    EXPECT_EQ(shown(), GetParam().initial);
}

TEST_P(DraftContract, TypingSetsNothingUntilTheFieldIsLeft) {
    typeInto(field(), GetParam().typed);
    EXPECT_EQ(setting(), GetParam().initial);

    press(Qt::Key_Tab);
    EXPECT_EQ(setting(), GetParam().typed);
}

TEST_P(DraftContract, EnterSetsTheValueAndTidiesTheText) {
    submit(field(), GetParam().untidy);

    EXPECT_EQ(setting(), GetParam().typed);
    EXPECT_EQ(shown(), GetParam().typed);
}

TEST_P(DraftContract, ATextWithoutAValueGivesWayToTheSetting) {
    submit(field(), GetParam().worthless);

    EXPECT_EQ(setting(), GetParam().initial);
    EXPECT_EQ(shown(), GetParam().initial);
}

TEST_P(DraftContract, ATextPutThereWithoutTheKeyboardCountsAtOnce) {
    otherField().setFocus();
    replaceText(field(), GetParam().untidy);

    EXPECT_EQ(setting(), GetParam().typed);
    EXPECT_EQ(shown(), GetParam().typed);
}

TEST_P(DraftContract, ATextSetByAssistiveTechnologyCountsWhenTheFieldIsLeft) {
    field().setFocus();
    replaceText(field(), GetParam().typed);
    EXPECT_EQ(setting(), GetParam().initial);

    press(Qt::Key_Tab);
    EXPECT_EQ(setting(), GetParam().typed);
}

TEST_P(DraftContract, ATextSetByAssistiveTechnologyCountsWhenEnterIsPressed) {
    field().setFocus();
    replaceText(field(), GetParam().untidy);
    press(Qt::Key_Return);

    EXPECT_EQ(setting(), GetParam().typed);
    EXPECT_EQ(shown(), GetParam().typed);
}

TEST_P(DraftContract, AnotherWindowLeavesADraftAlone) {
    typeInto(field(), GetParam().typed);
    lookElsewhere();
    EXPECT_EQ(setting(), GetParam().initial);
    EXPECT_EQ(shown(), GetParam().typed);

    press(Qt::Key_Return);
    EXPECT_EQ(setting(), GetParam().typed);
}

TEST_P(DraftContract, TheContextMenuLeavesADraftAlone) {
    typeInto(field(), GetParam().typed);
    bool hasOpened = false;
    const auto closeMenu = [&hasOpened] {
        if (QWidget* const popup = QApplication::activePopupWidget()) {
            hasOpened = true;
            popup->close();
        }
    };
    QTimer::singleShot(0, &field(), closeMenu); // the menu of one of the fields runs a loop of its own
    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, field().mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&field(), &event);
    settle();
    closeMenu();
    settle();

    EXPECT_TRUE(hasOpened);
    EXPECT_EQ(setting(), GetParam().initial);
    EXPECT_EQ(shown(), GetParam().typed);
}

TEST_P(DraftContract, ClosingTheWindowSetsTheValue) {
    typeInto(field(), GetParam().typed);
    window.close();

    EXPECT_EQ(setting(), GetParam().typed);
}

TEST_P(DraftContract, ClosingTheWindowFromAnotherOneSetsTheValueToo) {
    typeInto(field(), GetParam().typed);
    QWidget other;
    other.show();
    other.activateWindow();
    settle();
    ASSERT_EQ(setting(), GetParam().initial);
    window.close();

    EXPECT_EQ(setting(), GetParam().typed);
}

TEST_P(DraftContract, AClickOnItsLabelGivesTheFieldTheKeyboard) {
    otherField().setFocus();
    QTest::mouseClick(&label(GetParam().label), Qt::LeftButton);

    EXPECT_EQ(focused(), GetParam().label);
}

// A change made elsewhere.

TEST_P(DraftContract, AChangeMadeElsewhereIsShown) {
    changeElsewhere();
    settle();

    EXPECT_EQ(shown(), GetParam().elsewhere);
}

TEST_P(DraftContract, AChangeMadeElsewhereLeavesADraftAlone) {
    typeInto(field(), GetParam().typed);
    changeElsewhere();
    settle();

    EXPECT_EQ(shown(), GetParam().typed);
}

TEST_P(DraftContract, LeavingTheFieldUnchangedKeepsAChangeMadeElsewhere) {
    field().setFocus();
    changeElsewhere();
    otherField().setFocus(); // before the change is shown
    settle();

    EXPECT_EQ(setting(), GetParam().elsewhere);
    EXPECT_EQ(shown(), GetParam().elsewhere);
}

TEST_P(DraftContract, ATextWithoutAValueKeepsAChangeMadeElsewhere) {
    for (const bool isShownFirst : {false, true}) {
        typeInto(field(), GetParam().worthless);
        changeElsewhere();
        if (isShownFirst) {
            settle();
        }
        press(Qt::Key_Return);

        EXPECT_EQ(setting(), GetParam().elsewhere);
        EXPECT_EQ(shown(), GetParam().elsewhere);
    }
}

TEST_P(DraftContract, ATypedValueCountsAfterAChangeMadeElsewhere) {
    typeInto(field(), GetParam().initial);
    changeElsewhere();
    settle();
    press(Qt::Key_Return);

    EXPECT_EQ(setting(), GetParam().initial);
    EXPECT_EQ(shown(), GetParam().initial);
}

TEST_P(DraftContract, AfterADraftWithoutAValueTheFieldFollowsTheSettingAgain) {
    typeInto(field(), GetParam().worthless);
    prefs.setSlowPingThresholdMs(250);
    settle();
    press(Qt::Key_Return);
    changeElsewhere();
    settle();

    EXPECT_EQ(shown(), GetParam().elsewhere);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, DraftContract,
    testing::Values(
        DraftField{"Host", "Host to Ping", "1.1.1.1", "one.example", "  one.example ", " ", "two.example"},
        DraftField{"Interval", "Ping Every", "1", "30", " 30.2", "ab", "20"}),
    [](const auto& test) { return test.param.name; });

} // namespace tarnwick
