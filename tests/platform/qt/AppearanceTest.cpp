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
    AppearanceTest() {
        QApplication::setPalette(QPalette()); // the toolkit's
        toolkitIsDark = Appearance::isDark();
    }

    ~AppearanceTest() override { QApplication::setPalette(QPalette()); }

    static double textContrast() {
        const QPalette palette = QApplication::palette();
        return test::contrast(palette.color(QPalette::WindowText), palette.color(QPalette::Window));
    }

    bool toolkitIsDark;
};

QPalette ground(const QColor& window, const QColor& text) {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    return palette;
}

} // namespace

TEST_F(AppearanceTest, WithoutAPreferenceItIsAsLightAsTheToolkit) {
    Appearance::prefer(std::nullopt);

    EXPECT_EQ(Appearance::isDark(), toolkitIsDark);
}

TEST_F(AppearanceTest, TheColorsAreOursWhateverTheToolkitBeginsWith) {
    Appearance::prefer(false);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(0xfa, 0xfa, 0xfa));

    Appearance::prefer(true);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(0x28, 0x2a, 0x30));

    Appearance::prefer(std::nullopt);
    EXPECT_EQ(
        QApplication::palette().color(QPalette::Window),
        toolkitIsDark ? QColor(0x28, 0x2a, 0x30) : QColor(0xfa, 0xfa, 0xfa));
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
    Appearance::prefer(toolkitIsDark, true);
    EXPECT_EQ(changes, 3);
}

TEST_F(AppearanceTest, MoreContrastIsBlackAndWhite) {
    for (const bool dark : {false, true}) {
        Appearance::prefer(dark, true);
        EXPECT_EQ(Appearance::isDark(), dark);
        EXPECT_EQ(textContrast(), 21);
        EXPECT_TRUE(Appearance::isBlackAndWhite(QApplication::palette()));

        Appearance::prefer(dark, false);
        EXPECT_LT(textContrast(), 20);
        EXPECT_FALSE(Appearance::isBlackAndWhite(QApplication::palette()));
    }
}

TEST_F(AppearanceTest, TheUsualColorsOfDesktopsAreNotTakenForBlackAndWhite) {
    EXPECT_TRUE(Appearance::isBlackAndWhite(ground(Qt::white, Qt::black)));
    EXPECT_TRUE(Appearance::isBlackAndWhite(ground(Qt::black, Qt::white)));
    EXPECT_FALSE(Appearance::isBlackAndWhite(ground(QColor(0xef, 0xef, 0xef), Qt::black)));
    EXPECT_FALSE(Appearance::isBlackAndWhite(ground(QColor(0x2a, 0x2e, 0x32), QColor(0xfc, 0xfc, 0xfc))));
}

TEST_F(AppearanceTest, TextIsReadableInEachKind) {
    constexpr double enough = 4.5; // of a contrast, for text of the usual size
    for (const auto& [dark, contrast] :
         {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
        Appearance::prefer(dark, contrast);
        const QPalette palette = QApplication::palette();
        using Pair = std::pair<QPalette::ColorRole, QPalette::ColorRole>;
        for (const auto& [text, ground] : {
                 Pair(QPalette::WindowText, QPalette::Window),
                 Pair(QPalette::Text, QPalette::Base),
                 Pair(QPalette::ButtonText, QPalette::Button),
                 Pair(QPalette::HighlightedText, QPalette::Highlight),
                 Pair(QPalette::Link, QPalette::Window),
                 Pair(QPalette::ToolTipText, QPalette::ToolTipBase),
             }) {
            EXPECT_GE(test::contrast(palette.color(text), palette.color(ground)), enough)
                << dark << contrast << text;
        }
    }
}

} // namespace tarnwick
