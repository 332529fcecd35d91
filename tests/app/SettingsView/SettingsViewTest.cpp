// The form in which the settings are changed, as a whole.
#include "app/SettingsView/SettingsView.h"

#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QWheelEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::Not;

class SettingsViewTest : public test::SettingsFormTest {};

} // namespace

// Layout.

TEST_F(SettingsViewTest, ItIsFourHundredAndFortyPointsWideInTheUsualFont) {
    useUsualFont();

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
    useUsualFont();
    present();

    EXPECT_EQ(interval().findChild<QLineEdit*>()->width(), 44);
}

TEST_F(SettingsViewTest, TheThresholdsTextHasSixtyFourPoints) {
    useUsualFont();
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

TEST_F(SettingsViewTest, NoLineEndsBetweenANumberAndItsUnit) {
    EXPECT_TRUE(label("1 to 60 seconds.").text().startsWith(QString::fromUtf8("1 to 60\u00a0seconds.")));
    EXPECT_TRUE(label("Pings faster").text().endsWith(QString::fromUtf8("threshold +\u00a0900\u00a0ms.")));
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

TEST_F(SettingsViewTest, AClickOnRestoreCommitsNoDraftBeforehand) {
    resolve("one.example", "192.0.2.1");
    watchFor(10.5);
    present();
    const std::int64_t before = monitor.reading().session.sent;
    ASSERT_GT(before, 0);
    typeInto(host(), "one.example");
    QTest::mouseClick(&restore(), Qt::LeftButton);
    settle();

    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_EQ(host().text(), "1.1.1.1");
    EXPECT_GE(monitor.reading().session.sent, before);
}

TEST_F(SettingsViewTest, RestoringDefaultsReplacesATypedInterval) {
    present();
    typeInto(interval(), "30");
    QTest::mouseClick(&restore(), Qt::LeftButton);
    press(Qt::Key_Tab);

    EXPECT_EQ(interval().text(), "1");
    EXPECT_EQ(prefs.pingInterval(), 1);
}

TEST_F(SettingsViewTest, RestoringDefaultsCanBeUndone) {
    resolve("one.example", "192.0.2.1");
    monitor.setHostname("one.example");
    prefs.setPingInterval(30);
    prefs.setPingTimeout(9);
    prefs.setDisplay(Preferences::Display::textOnly);
    present();
    auto& undo = control<QPushButton>("Undo");
    EXPECT_FALSE(undo.isVisible());

    restore().click();
    settle();
    ASSERT_TRUE(undo.isVisible());
    undo.click();
    settle();

    EXPECT_EQ(host().text(), "one.example");
    EXPECT_EQ(interval().text(), "30");
    EXPECT_EQ(prefs.pingTimeout(), 9);
    EXPECT_EQ(display().currentText(), "Text Only");
    EXPECT_FALSE(undo.isVisible());
}

TEST_F(SettingsViewTest, ClosingTheWindowEndsTheChanceToUndo) {
    present();
    restore().click();
    window.close();
    present();

    EXPECT_FALSE(control<QPushButton>("Undo").isVisible());
}

TEST_F(SettingsViewTest, RestoreDefaultSettingsIsNotWhereOkWouldBe) {
    present();

    EXPECT_EQ(place(restore()).left(), place(*label("Display").parentWidget()).left());
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
    prefs.setPingInterval(5); // not at an end, beyond which it would not go anyway
    present();
    host().setFocus();
    for (QWidget* each :
         {static_cast<QWidget*>(&interval()), static_cast<QWidget*>(&threshold()),
          static_cast<QWidget*>(&display()), static_cast<QWidget*>(&lossText())}) {
        const QPointF middle = each->rect().center();
        QWheelEvent event(
            middle, each->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QApplication::sendEvent(each, &event);
    }

    EXPECT_EQ(prefs.pingInterval(), 5);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
    EXPECT_EQ(prefs.display(), Preferences::Display::iconAndText);
    EXPECT_EQ(prefs.lossTextMode(), MenuBarTitle::LossMode::whenLossy);
}

// Numbers of other places.

TEST_F(SettingsViewTest, TheThresholdIsWrittenAsBesideTheChart) {
    QLocale::setDefault(QLocale("de_DE"));
    SettingsView view(model, loop, nullptr);
    prefs.setSlowPingThresholdMs(2000);
    view.show();
    settle();
    const LatencyChart::Chart chart{.lowThresholdMs = 2000};
    ASSERT_EQ(chart.thresholdText(), "slow above 2000 ms");

    bool isShown = false;
    for (const QLabel* each : view.findChildren<QLabel*>()) {
        isShown = isShown || each->text() == "2000 ms";
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

TEST_F(SettingsViewTest, ANoticeStandsBelowTheFormAndMovesNothing) {
    present();
    const int before = window.height();
    const auto top = [this](const QWidget& control) { return control.mapTo(&window, QPoint()).y(); };
    const int ofHost = top(host());
    const int ofRestore = top(restore());
    EXPECT_THROW(static_cast<void>(control<QPushButton>("Copy")), std::logic_error);

    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "Do it with:", .command = "it"});
    settle();
    EXPECT_GT(window.height(), before);
    EXPECT_GE(top(control<QPushButton>("Copy")), ofRestore + restore().height());
    EXPECT_EQ(top(host()), ofHost);
    EXPECT_EQ(top(restore()), ofRestore);

    monitor.clearNotice(Notice::Kind::settingsMistake);
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.height(), before);
    EXPECT_THROW(static_cast<void>(control<QPushButton>("Copy")), std::logic_error);
}

} // namespace tarnwick
