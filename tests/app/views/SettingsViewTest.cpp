// The form in which the settings are changed.
#include "app/SettingsView/SettingsView.h"

#include "platform/qt/Appearance.h"
#include "tests/app/views/SettingsForm.h"

#include <QAccessible>
#include <QImage>
#include <QWheelEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class SettingsViewTest : public testing::Test, protected test::SettingsForm {
protected:
    ~SettingsViewTest() override { QLocale::setDefault(QLocale::c()); }

    static void submit(QLineEdit& field, const char* text) {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }

    void submitInterval(const char* text) {
        interval().setFocus();
        interval().selectAll();
        QTest::keyClicks(&interval(), text);
        QTest::keyClick(&interval(), Qt::Key_Return);
        settle();
    }

    [[nodiscard]] static std::vector<std::string> titles(const QComboBox& picker) {
        std::vector<std::string> texts;
        for (int index = 0; index < picker.count(); ++index) {
            texts.push_back(picker.itemText(index).toStdString());
        }
        return texts;
    }

    static void pick(QComboBox& picker, int index) {
        picker.setFocus();
        QTest::keyClick(&picker, Qt::Key_Home);
        for (int step = 0; step < index; ++step) {
            QTest::keyClick(&picker, Qt::Key_Down);
        }
    }

    [[nodiscard]] QAccessibleInterface& accessible(QWidget& widget) const {
        return *QAccessible::queryAccessibleInterface(&widget);
    }

    /// Where it is in the form.
    [[nodiscard]] QRect place(const QWidget& widget) const {
        return {widget.mapTo(&window.view(), QPoint()), widget.size()};
    }

    [[nodiscard]] const QLabel& label(const std::string& text) const {
        for (const QLabel* each : window.findChildren<QLabel*>()) {
            if (each->text().replace(QChar::Nbsp, ' ').toStdString().starts_with(text)) {
                return *each;
            }
        }
        throw std::logic_error("no label " + text);
    }
};

} // namespace

// Layout.

TEST_F(SettingsViewTest, ItIsFourHundredAndFortyPointsWideInTheUsualFont) {
    QFont font = window.view().font();
    font.setPixelSize(13);
    window.view().setFont(font);

    EXPECT_EQ(window.view().sizeHint().width(), 440);
}

TEST_F(SettingsViewTest, ItGrowsWithTheUsersFont) {
    QFont font = window.view().font();
    font.setPixelSize(13);
    window.view().setFont(font);
    const QSize usual = window.view().sizeHint();
    font.setPixelSize(26);
    window.view().setFont(font);
    const QSize large = window.view().sizeHint();

    EXPECT_GT(large.width(), usual.width() * 3 / 2);
    EXPECT_GT(large.height(), usual.height() * 3 / 2);
}

TEST_F(SettingsViewTest, NothingIsCutOffInAnyFont) {
    for (const int pixels : {10, 13, 20, 30}) {
        QFont font = window.view().font();
        font.setPixelSize(pixels);
        window.view().setFont(font);
        present();
        for (const QWidget* each : window.view().findChildren<QWidget*>()) {
            const bool isControl = qobject_cast<const QLabel*>(each) != nullptr
                                   || qobject_cast<const QComboBox*>(each) != nullptr
                                   || qobject_cast<const QAbstractButton*>(each) != nullptr;
            if (isControl && each->isVisible()) {
                EXPECT_GE(each->width(), each->minimumSizeHint().width()) << pixels;
                EXPECT_GE(each->height(), each->minimumSizeHint().height()) << pixels;
                EXPECT_TRUE(window.view().rect().contains(place(*each))) << pixels;
            }
        }
    }
}

TEST_F(SettingsViewTest, ItsLabelsAndFootersSayWhatEachSettingIs) {
    present();

    EXPECT_THAT(labels(), HasSubstr("Host to Ping\n"));
    EXPECT_THAT(
        labels(), HasSubstr("Tarnwick constantly pings this host to measure the quality of your internet "
                            "connection. The bars show signal strength based on recent latency and packet "
                            "loss.\n"));
    EXPECT_THAT(labels(), HasSubstr("Ping Every\n"));
    EXPECT_THAT(labels(), HasSubstr("s\n"));
    EXPECT_THAT(
        labels(), HasSubstr("1 to 60 seconds. Slower intervals send less traffic and use less battery, but "
                            "the bars react more slowly.\n"));
    EXPECT_THAT(labels(), HasSubstr("Slow Ping Threshold\n"));
    EXPECT_THAT(
        labels(), HasSubstr("Pings faster than the threshold count as perfect. Slower pings lower the signal "
                            "strength until it reaches zero at threshold + 900 ms.\n"));
    EXPECT_THAT(labels(), HasSubstr("Display\nPacket Loss Text\n"));
    EXPECT_THAT(labels(), HasSubstr("Connection Up/Down Alerts\nLaunch at Login\n"));
    EXPECT_THAT(labels(), Not(HasSubstr("Updates")));
}

TEST_F(SettingsViewTest, TheIntervalsFieldIsFortyFourPointsWide) {
    QFont font = window.view().font();
    font.setPixelSize(13);
    window.view().setFont(font);
    present();

    EXPECT_EQ(interval().findChild<QLineEdit*>()->width(), 44);
}

TEST_F(SettingsViewTest, TheThresholdsTextHasSixtyFourPoints) {
    QFont font = window.view().font();
    font.setPixelSize(13);
    window.view().setFont(font);
    present();

    EXPECT_EQ(label("100 ms").width(), 64);
}

TEST_F(SettingsViewTest, FootersAreSmallerAndQuieterThanLabels) {
    present();
    const QLabel& footer = label("1 to 60 seconds.");
    const QLabel& name = label("Ping Every");

    EXPECT_LT(footer.font().pointSizeF(), name.font().pointSizeF());
    EXPECT_LT(
        footer.palette().color(QPalette::WindowText).alpha(),
        name.palette().color(QPalette::WindowText).alpha());
}

TEST_F(SettingsViewTest, ReadFromRightToLeftItIsMirrored) {
    window.setLayoutDirection(Qt::RightToLeft);
    present();

    EXPECT_GT(place(label("Host to Ping")).left(), place(host()).right());
    EXPECT_GT(place(threshold()).left(), place(label("100 ms")).right());
    EXPECT_TRUE(label("1 to 60 seconds.").alignment() & Qt::AlignRight);
    EXPECT_TRUE(label("100 ms").alignment() & Qt::AlignLeft);
}

TEST_F(SettingsViewTest, ItFollowsTheDesktopFromLightToDark) {
    const auto groundOfCard = [this] {
        const QImage image = window.view().grab().toImage();
        return image.pixelColor(place(label("Display")).topLeft() - QPoint(4, 0)).lightness();
    };
    Appearance::prefer(false);
    present();
    const int onLight = groundOfCard();
    Appearance::prefer(true);
    settle();
    const int onDark = groundOfCard();
    const QColor footer = label("1 to 60 seconds.").palette().color(QPalette::WindowText);
    Appearance::prefer(std::nullopt);

    EXPECT_GT(onLight, 200);
    EXPECT_LT(onDark, 80);
    EXPECT_GT(footer.lightness(), 200);
}

// The host.

TEST_F(SettingsViewTest, TheHostsFieldBeginsWithTheHost) {
    present();

    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(SettingsViewTest, TypingAHostPingsNothingNew) {
    present();
    host().setFocus();
    type("one.example");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(SettingsViewTest, EnterCommitsTheHostAndShowsItWithoutWhiteSpace) {
    resolve("one.example", "192.0.2.1");
    present();
    submit(host(), "  one.example ");

    EXPECT_EQ(prefs.hostname(), "one.example");
    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(SettingsViewTest, LeavingTheFieldCommitsTheHost) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    type("one.example");
    press(Qt::Key_Tab);

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(SettingsViewTest, AnEmptiedFieldGoesBackToTheHost) {
    present();
    submit(host(), " ");

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "1.1.1.1");
}

TEST_F(SettingsViewTest, AHostChangedElsewhereIsShown) {
    resolve("one.example", "192.0.2.1");
    present();
    monitor.setHostname("one.example");
    settle();

    EXPECT_EQ(host().text(), "one.example");
}

TEST_F(SettingsViewTest, AHostChangedElsewhereLeavesADraftAlone) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    type("two.exam");
    monitor.setHostname("one.example");
    settle();

    EXPECT_EQ(host().text(), "two.exam");
}

TEST_F(SettingsViewTest, LeavingTheFieldTakesNoChangeBackThatWasMadeElsewhere) {
    resolve("one.example", "192.0.2.1");
    present();
    host().setFocus();
    monitor.setHostname("one.example");
    interval().setFocus(); // before the change is shown
    settle();

    EXPECT_EQ(prefs.hostname(), "one.example");
}

TEST_F(SettingsViewTest, AnAddressHasNoAddressRowOnceResolved) {
    present();
    EXPECT_THAT(labels(), HasSubstr("Address\nResolving…\n"));

    watchFor(1);
    settle();
    EXPECT_THAT(labels(), Not(HasSubstr("Address\n")));
}

TEST_F(SettingsViewTest, AHostsNameHasItsAddressBelow) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();

    EXPECT_THAT(labels(), HasSubstr("Address\n192.0.2.1\n"));
}

TEST_F(SettingsViewTest, AHostThatIsNotFoundSaysSoInTheAddressRow) {
    network.setHost("nowhere.example", PingError::resolution("No such host"));
    monitor.setHostname("nowhere.example");
    monitor.start();
    present();
    ASSERT_TRUE(waitUntilDown());
    settle();

    EXPECT_THAT(labels(), HasSubstr("Address\nCan’t find host “nowhere.example”\n"));
}

// The interval.

TEST_F(SettingsViewTest, TooShortAnIntervalBecomesTheShortest) {
    prefs.setPingInterval(5);
    present();
    submitInterval("0");

    EXPECT_EQ(prefs.pingInterval(), 1);
    EXPECT_EQ(interval().text(), "1");
}

TEST_F(SettingsViewTest, TooLongAnIntervalBecomesTheLongest) {
    present();
    submitInterval("600");

    EXPECT_EQ(prefs.pingInterval(), 60);
    EXPECT_EQ(interval().text(), "60");
}

TEST_F(SettingsViewTest, WhatIsNoNumberBringsTheIntervalBack) {
    prefs.setPingInterval(5);
    present();
    for (const char* const text : {"abc", "7s", "--", " "}) {
        submitInterval(text);

        EXPECT_EQ(prefs.pingInterval(), 5) << text;
        EXPECT_EQ(interval().text(), "5") << text;
    }
}

TEST_F(SettingsViewTest, AnEmptiedIntervalComesBack) {
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

TEST_F(SettingsViewTest, AnIntervalIsRoundedToWholeSeconds) {
    present();
    submitInterval("2.5");

    EXPECT_EQ(prefs.pingInterval(), 3);
    EXPECT_EQ(interval().text(), "3");
}

TEST_F(SettingsViewTest, TypingAnIntervalChangesNothingYet) {
    present();
    interval().setFocus();
    interval().selectAll();
    QTest::keyClicks(&interval(), "30");
    settle();
    EXPECT_EQ(prefs.pingInterval(), 1);

    press(Qt::Key_Tab);
    EXPECT_EQ(prefs.pingInterval(), 30);
}

TEST_F(SettingsViewTest, TheStepperGoesUpAndDownBySeconds) {
    present();
    interval().setFocus();
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.pingInterval(), 3);
    EXPECT_EQ(interval().text(), "3");

    press(Qt::Key_Down);
    EXPECT_EQ(prefs.pingInterval(), 2);
}

TEST_F(SettingsViewTest, TheStepperEndsAtOneAndSixty) {
    present();
    interval().setFocus();
    press(Qt::Key_Down);
    EXPECT_EQ(prefs.pingInterval(), 1);

    prefs.setPingInterval(60);
    settle();
    press(Qt::Key_Up);
    EXPECT_EQ(prefs.pingInterval(), 60);
}

TEST_F(SettingsViewTest, AnIntervalChangedElsewhereIsShown) {
    present();
    prefs.setPingInterval(20);
    settle();

    EXPECT_EQ(interval().text(), "20");
}

TEST_F(SettingsViewTest, AnIntervalChangedElsewhereLeavesADraftAlone) {
    present();
    interval().setFocus();
    interval().selectAll();
    QTest::keyClicks(&interval(), "30");
    prefs.setPingInterval(20);
    settle();

    EXPECT_EQ(interval().text(), "30");
}

TEST_F(SettingsViewTest, ANewIntervalReschedulesThePings) {
    watchFor(10.5);
    present();
    submitInterval("5");
    const std::uint64_t before = monitor.ledger().session().sent;
    loop.advance(20);

    EXPECT_EQ(monitor.ledger().session().sent - before, 4);
}

// The threshold.

TEST_F(SettingsViewTest, TheThresholdsEndsAreFiftyAndTwoThousand) {
    present();
    threshold().setFocus();
    press(Qt::Key_End);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);
    EXPECT_THAT(labels(), HasSubstr("2000 ms\n"));

    press(Qt::Key_Home);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 50);
    EXPECT_THAT(labels(), HasSubstr("50 ms\n"));
}

TEST_F(SettingsViewTest, DraggingTheSliderYieldsMultiplesOfTen) {
    present();
    const int y = threshold().height() / 2;
    QTest::mousePress(&threshold(), Qt::LeftButton, {}, {threshold().width() / 5, y});
    for (int x = 0; x < threshold().width(); x += 3) {
        QTest::mouseMove(&threshold(), {x, y});
        EXPECT_EQ(std::fmod(prefs.slowPingThresholdMs(), 10), 0);
    }
    QTest::mouseMove(&threshold(), {threshold().width() + 50, y});
    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);
    QTest::mouseMove(&threshold(), {-50, y});
    EXPECT_EQ(prefs.slowPingThresholdMs(), 50);
    QTest::mouseRelease(&threshold(), Qt::LeftButton, {}, {-50, y});
}

TEST_F(SettingsViewTest, ArrowKeysMoveTheThresholdByTenMillisecondsAnywhere) {
    present();
    threshold().setFocus();
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 60);

    press(Qt::Key_End);
    press(Qt::Key_Left);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1990);
}

TEST_F(SettingsViewTest, PageKeysMoveTheThresholdByTenSteps) {
    present();
    threshold().setFocus();
    press(Qt::Key_PageUp);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 200);

    press(Qt::Key_PageDown);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
}

TEST_F(SettingsViewTest, AThresholdSetByHandIsShownAsItIs) {
    prefs.setSlowPingThresholdMs(123);
    present();

    EXPECT_THAT(labels(), HasSubstr("123 ms\n"));
    EXPECT_EQ(prefs.slowPingThresholdMs(), 123);
}

TEST_F(SettingsViewTest, AThresholdOffTheScaleStaysUntilTheSliderIsMoved) {
    prefs.setSlowPingThresholdMs(9000);
    present();
    EXPECT_THAT(labels(), HasSubstr("9000 ms\n"));
    EXPECT_EQ(prefs.slowPingThresholdMs(), 9000);

    threshold().setFocus();
    press(Qt::Key_Left);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1990);
}

TEST_F(SettingsViewTest, AThresholdChangedElsewhereMovesTheSlider) {
    present();
    const int before = threshold().value();
    prefs.setSlowPingThresholdMs(1000);
    settle();

    EXPECT_GT(threshold().value(), before);
    EXPECT_THAT(labels(), HasSubstr("1000 ms\n"));
}

// Pickers and switches.

TEST_F(SettingsViewTest, ThePickersOfferEveryCase) {
    EXPECT_THAT(titles(display()), ElementsAre("Icon and Text", "Icon Only", "Text Only"));
    EXPECT_THAT(titles(lossText()), ElementsAre("Off", "When There's Loss", "Always"));
}

TEST_F(SettingsViewTest, WhatIsPickedHoldsAtOnce) {
    present();
    pick(display(), 2);
    EXPECT_EQ(prefs.display(), Preferences::Display::textOnly);

    pick(lossText(), 2);
    EXPECT_EQ(prefs.lossTextMode(), MenuBarTitle::LossMode::always);
}

TEST_F(SettingsViewTest, ThePickersFollowTheSettings) {
    present();
    prefs.setDisplay(Preferences::Display::iconOnly);
    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    settle();

    EXPECT_EQ(display().currentText(), "Icon Only");
    EXPECT_EQ(lossText().currentText(), "Off");
}

TEST_F(SettingsViewTest, TurningAlertsOnAsksForWhatTheyNeedAndTurningThemOffDoesNot) {
    int asked = 0;
    model.onAlertsTurnedOn = [&] { ++asked; };
    present();
    alerts().click();
    EXPECT_TRUE(prefs.showNotifications());
    EXPECT_EQ(asked, 1);

    alerts().click();
    EXPECT_FALSE(prefs.showNotifications());
    EXPECT_EQ(asked, 1);
}

TEST_F(SettingsViewTest, AlertsTurnedOnElsewhereAskNothing) {
    int asked = 0;
    model.onAlertsTurnedOn = [&] { ++asked; };
    present();
    prefs.setShowNotifications(true);
    settle();

    EXPECT_TRUE(alerts().isChecked());
    EXPECT_EQ(asked, 0);
}

TEST_F(SettingsViewTest, AClickOnASwitchsLabelTurnsIt) {
    present();
    QTest::mouseClick(const_cast<QLabel*>(&label("Connection Up/Down Alerts")), Qt::LeftButton);

    EXPECT_TRUE(prefs.showNotifications());
}

TEST_F(SettingsViewTest, LaunchAtLoginRegistersTheProgram) {
    present();
    launchAtLogin().click();

    EXPECT_EQ(loginItem.now, LoginItem::Status::enabled);
    EXPECT_TRUE(launchAtLogin().isChecked());
}

TEST_F(SettingsViewTest, AFailedLaunchAtLoginTurnsBackAndSaysWhyInRed) {
    loginItem.failure = "The folder is read-only";
    present();
    const int before = window.height();
    launchAtLogin().click();
    settle();

    EXPECT_FALSE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Launch at Login\nThe folder is read-only\n"));
    const QLabel& message = label("The folder is read-only");
    const QColor color = message.palette().color(QPalette::WindowText);
    EXPECT_GT(color.red(), 2 * color.green());
    EXPECT_LT(message.font().pointSizeF(), label("Launch at Login").font().pointSizeF());
    EXPECT_GT(window.height(), before);
}

TEST_F(SettingsViewTest, WhenApprovalIsNeededItSaysSoAndShowsWhere) {
    loginItem.afterEnrolling = LoginItem::Status::requiresApproval;
    int shown = 0;
    model.launchAtLogin().onApprovalNeeded = [&] { ++shown; };
    present();
    launchAtLogin().click();
    settle();

    EXPECT_TRUE(launchAtLogin().isChecked());
    EXPECT_THAT(labels(), HasSubstr("Approve Tarnwick in your desktop's startup settings.\n"));
    EXPECT_EQ(shown, 1);
}

// All of it.

TEST_F(SettingsViewTest, RestoringDefaultsBringsEverythingBack) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    prefs.setPingInterval(30);
    prefs.setSlowPingThresholdMs(250);
    prefs.setDisplay(Preferences::Display::textOnly);
    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    prefs.setShowNotifications(true);
    present();
    restore().click();
    settle();

    EXPECT_EQ(host().text(), "1.1.1.1");
    EXPECT_EQ(interval().text(), "1");
    EXPECT_THAT(labels(), HasSubstr("100 ms\n"));
    EXPECT_EQ(display().currentText(), "Icon and Text");
    EXPECT_EQ(lossText().currentText(), "When There's Loss");
    EXPECT_FALSE(alerts().isChecked());
}

TEST_F(SettingsViewTest, RestoringDefaultsReplacesDrafts) {
    present();
    host().setText("two.exam");
    restore().click();

    EXPECT_EQ(host().text(), "1.1.1.1");
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
}

TEST_F(SettingsViewTest, WhileHiddenItObservesNothing) {
    present();
    window.close();
    prefs.setSlowPingThresholdMs(250);
    settle();
    EXPECT_EQ(label("100 ms").text(), "100 ms");

    present();
    EXPECT_THAT(labels(), HasSubstr("250 ms\n"));
}

TEST_F(SettingsViewTest, ShownAgainItReadsTheLoginItemAfresh) {
    present();
    window.close();
    loginItem.now = LoginItem::Status::requiresApproval;
    present();

    EXPECT_TRUE(launchAtLogin().isChecked());
}

TEST_F(SettingsViewTest, ItKeepsNoTimer) {
    watchFor(5.5);
    const std::size_t before = loop.timerCount();
    present();

    EXPECT_EQ(loop.timerCount(), before);
}

TEST_F(SettingsViewTest, TheWheelPassesOverWhatHasNotTheKeyboard) {
    present();
    host().setFocus();
    for (QWidget* each :
         {static_cast<QWidget*>(&interval()), static_cast<QWidget*>(&threshold()),
          static_cast<QWidget*>(&display())}) {
        const QPointF middle = each->rect().center();
        QWheelEvent event(
            middle, each->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QApplication::sendEvent(each, &event);
    }

    EXPECT_EQ(prefs.pingInterval(), 1);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
    EXPECT_EQ(prefs.display(), Preferences::Display::iconAndText);
}

// Numbers of other places.

TEST_F(SettingsViewTest, TheThresholdIsGroupedAsInGermany) {
    QLocale::setDefault(QLocale("de_DE"));
    SettingsView view(model, loop, nullptr);
    prefs.setSlowPingThresholdMs(2000);
    view.show();
    settle();

    bool isShown = false;
    for (const QLabel* each : view.findChildren<QLabel*>()) {
        isShown = isShown || each->text() == "2.000 ms";
    }
    EXPECT_TRUE(isShown);
}

TEST_F(SettingsViewTest, ArabicDigitsAreShownAndUnderstood) {
    QLocale::setDefault(QLocale("ar_EG"));
    SettingsView view(model, loop, nullptr);
    view.show();
    auto& box = *view.findChild<QSpinBox*>();
    EXPECT_EQ(box.text(), QString::fromUtf8("١"));

    box.findChild<QLineEdit*>()->setText(QString::fromUtf8("٣٠"));
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(prefs.pingInterval(), 30);
    EXPECT_EQ(box.text(), QString::fromUtf8("٣٠"));
}

// Assistive technology.

TEST_F(SettingsViewTest, EveryControlTellsItsRoleAndWhatItIsFor) {
    present();

    EXPECT_EQ(accessible(host()).role(), QAccessible::EditableText);
    EXPECT_EQ(accessible(interval()).role(), QAccessible::SpinBox);
    EXPECT_EQ(accessible(threshold()).role(), QAccessible::Slider);
    EXPECT_EQ(accessible(display()).role(), QAccessible::ComboBox);
    EXPECT_EQ(accessible(alerts()).role(), QAccessible::CheckBox);
    EXPECT_EQ(accessible(restore()).role(), QAccessible::Button);
    EXPECT_TRUE(accessible(host()).text(QAccessible::Description).startsWith("Tarnwick constantly pings"));
    EXPECT_TRUE(accessible(interval()).text(QAccessible::Description).startsWith("1 to 60 seconds."));
    EXPECT_TRUE(accessible(threshold()).text(QAccessible::Description).startsWith("Pings faster"));
}

TEST_F(SettingsViewTest, EveryControlIsNamedByItsLabel) {
    present();
    // What a picker itself is called is what it has picked.
    for (QWidget* each : std::initializer_list<QWidget*>{
             &host(), &interval(), &threshold(), &display(), &lossText(), &alerts(), &launchAtLogin()}) {
        const auto labels = accessible(*each).relations(QAccessible::Label);
        ASSERT_EQ(labels.size(), 1) << name(*each);
        EXPECT_EQ(labels.front().first->text(QAccessible::Name).toStdString(), name(*each));
    }
    EXPECT_EQ(accessible(host()).text(QAccessible::Name), "Host to Ping");
    EXPECT_EQ(accessible(alerts()).text(QAccessible::Name), "Connection Up/Down Alerts");
    EXPECT_EQ(accessible(restore()).text(QAccessible::Name), "Restore Default Settings");
}

TEST_F(SettingsViewTest, TheAddressIsReadOutAsItIs) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    watchFor(1);
    present();
    auto& address = const_cast<QLabel&>(label("192.0.2.1"));

    EXPECT_EQ(accessible(address).text(QAccessible::Name), "192.0.2.1");
    EXPECT_EQ(
        accessible(address).relations(QAccessible::Label).front().first->text(QAccessible::Name), "Address");
}

TEST_F(SettingsViewTest, AFailedLaunchAtLoginIsToldWithTheSwitch) {
    loginItem.failure = "The folder is read-only";
    present();
    launchAtLogin().click();

    EXPECT_EQ(accessible(launchAtLogin()).text(QAccessible::Description), "The folder is read-only");
}

TEST_F(SettingsViewTest, TheSlidersValueIsTheThresholdInMilliseconds) {
    present();
    QAccessibleValueInterface* const value = accessible(threshold()).valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toDouble(), 100);
    EXPECT_EQ(value->minimumValue().toDouble(), 50);
    EXPECT_EQ(value->maximumValue().toDouble(), 2000);

    value->setCurrentValue(700);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 700);
    EXPECT_EQ(value->currentValue().toDouble(), 700);
}

TEST_F(SettingsViewTest, ItsActionsTurnTheSwitches) {
    present();
    for (QWidget* each : {&alerts(), &launchAtLogin()}) {
        QAccessibleActionInterface* const actions = accessible(*each).actionInterface();
        ASSERT_NE(actions, nullptr);
        actions->doAction(actions->actionNames().front());
    }

    EXPECT_TRUE(prefs.showNotifications());
    EXPECT_EQ(loginItem.now, LoginItem::Status::enabled);
}

TEST_F(SettingsViewTest, TheIntervalsValueCanBeSetWithoutTyping) {
    present();
    QAccessibleValueInterface* const value = accessible(interval()).valueInterface();
    ASSERT_NE(value, nullptr);
    value->setCurrentValue(12);

    EXPECT_EQ(prefs.pingInterval(), 12);
}

} // namespace tarnwick
