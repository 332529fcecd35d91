// The slider for the slow-ping threshold.
#include "tests/app/SettingsView/SettingsFormTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;

class ThresholdSliderTest : public test::SettingsFormTest {};

} // namespace

TEST_F(ThresholdSliderTest, TheThresholdsEndsAreFiftyAndTwoThousand) {
    present();
    threshold().setFocus();
    press(Qt::Key_End);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);
    EXPECT_THAT(labels(), HasSubstr("2000 ms\n"));

    press(Qt::Key_Home);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 50);
    EXPECT_THAT(labels(), HasSubstr("50 ms\n"));
}

TEST_F(ThresholdSliderTest, DraggingTheSliderYieldsMultiplesOfTen) {
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

TEST_F(ThresholdSliderTest, ArrowKeysMoveTheThresholdByTenMillisecondsAnywhere) {
    present();
    threshold().setFocus();
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 60);

    press(Qt::Key_End);
    press(Qt::Key_Left);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1990);
}

TEST_F(ThresholdSliderTest, PageKeysMoveTheThresholdByTenSteps) {
    present();
    threshold().setFocus();
    press(Qt::Key_PageUp);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 200);

    press(Qt::Key_PageDown);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 100);
}

TEST_F(ThresholdSliderTest, AThresholdSetByHandIsShownAsItIs) {
    prefs.setSlowPingThresholdMs(123);
    present();

    EXPECT_THAT(labels(), HasSubstr("123 ms\n"));
    EXPECT_EQ(prefs.slowPingThresholdMs(), 123);
}

TEST_F(ThresholdSliderTest, AThresholdOffTheScaleStaysUntilTheSliderIsMoved) {
    prefs.setSlowPingThresholdMs(9000);
    present();
    EXPECT_THAT(labels(), HasSubstr("9000 ms\n"));
    EXPECT_EQ(prefs.slowPingThresholdMs(), 9000);

    threshold().setFocus();
    press(Qt::Key_Left);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 1990);
}

TEST_F(ThresholdSliderTest, FromBeyondAnEndTheKeysLeadToThatEnd) {
    present();
    threshold().setFocus();
    prefs.setSlowPingThresholdMs(9000);
    settle();
    press(Qt::Key_End);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);
    EXPECT_THAT(labels(), HasSubstr("2000 ms\n"));

    prefs.setSlowPingThresholdMs(30);
    settle();
    press(Qt::Key_Home);
    EXPECT_EQ(prefs.slowPingThresholdMs(), 50);
    EXPECT_THAT(labels(), HasSubstr("50 ms\n"));
}

TEST_F(ThresholdSliderTest, FromBeyondAnEndAssistiveTechnologyCanSetThatEnd) {
    prefs.setSlowPingThresholdMs(9000);
    present();
    accessible(threshold()).valueInterface()->setCurrentValue(2000);

    EXPECT_EQ(prefs.slowPingThresholdMs(), 2000);
}

TEST_F(ThresholdSliderTest, AtItsEndTheKeyStoresNothingAnew) {
    prefs.setSlowPingThresholdMs(2000);
    present();
    threshold().setFocus();
    defaults.forgetChanges();
    press(Qt::Key_End);

    EXPECT_TRUE(defaults.changes().empty());
}

TEST_F(ThresholdSliderTest, AThresholdChangedElsewhereMovesTheSlider) {
    present();
    const int before = threshold().value();
    prefs.setSlowPingThresholdMs(1000);
    settle();

    EXPECT_GT(threshold().value(), before);
    EXPECT_THAT(labels(), HasSubstr("1000 ms\n"));
}

} // namespace tarnwick
