// Light and dark windows, as the user prefers them and whatever the toolkit begins with.
#include "platform/qt/Appearance.h"

#include "platform/qt/PaletteWatch.h"
#include "tests/support/Contrast.h"

#include <QApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include <utility>

namespace tarnwick {

namespace {

class AppearanceTest : public testing::Test {
protected:
    void TearDown() override { Appearance::prefer(std::nullopt); }

    const bool toolkitIsDark = Appearance::isDark();
    const QPalette toolkit = QApplication::palette();
};

} // namespace

TEST_F(AppearanceTest, WithoutAPreferenceTheToolkitsOwnColorsStay) {
    Appearance::prefer(std::nullopt);

    EXPECT_EQ(QApplication::palette(), toolkit);
}

TEST_F(AppearanceTest, WhereTheToolkitAgreesItsOwnColorsStay) {
    Appearance::prefer(toolkitIsDark);

    EXPECT_EQ(QApplication::palette(), toolkit);
}

TEST_F(AppearanceTest, WhereTheToolkitWouldDrawTheContraryThePreferenceHolds) {
    Appearance::prefer(!toolkitIsDark);

    EXPECT_EQ(Appearance::isDark(), !toolkitIsDark);
}

TEST_F(AppearanceTest, TheToolkitsColorsComeBackWithThePreference) {
    Appearance::prefer(!toolkitIsDark);
    Appearance::prefer(toolkitIsDark);

    EXPECT_EQ(QApplication::palette(), toolkit);
}

TEST_F(AppearanceTest, EachChangeOfThePreferenceChangesThePaletteOnce) {
    int changes = 0;
    const PaletteWatch watch([&changes] { ++changes; });

    Appearance::prefer(!toolkitIsDark);
    EXPECT_EQ(changes, 1);
    Appearance::prefer(!toolkitIsDark);
    EXPECT_EQ(changes, 1);
    Appearance::prefer(toolkitIsDark);
    EXPECT_EQ(changes, 2);
}

TEST_F(AppearanceTest, TextIsReadableInEitherKind) {
    constexpr double enough = 4.5; // of a contrast, for text of the usual size
    for (const bool dark : {false, true}) {
        Appearance::prefer(dark);
        const QPalette palette = QApplication::palette();
        using Pair = std::pair<QPalette::ColorRole, QPalette::ColorRole>;
        for (const auto& [text, ground] : {
                 Pair(QPalette::WindowText, QPalette::Window),
                 Pair(QPalette::Text, QPalette::Base),
                 Pair(QPalette::ButtonText, QPalette::Button),
                 Pair(QPalette::Link, QPalette::Window),
                 Pair(QPalette::ToolTipText, QPalette::ToolTipBase),
             }) {
            EXPECT_GE(test::contrast(palette.color(text), palette.color(ground)), enough) << dark << text;
        }
    }
}

} // namespace tarnwick
