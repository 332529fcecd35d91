// How bright the colors in theme files are.
#include "platform/theme/ThemeColor.h"

#include <gtest/gtest.h>

namespace tarnwick {

TEST(ThemeColorTest, ReadsTheFormsOfColors) {
    for (const char* white :
         {"#fff", "#ffffff", "#FFFFFFFF", "rgb(255, 255,255)", "rgba(255, 255, 255, 100%)", "white",
          " 255,255,255 ", "rgb(100%, 100%, 100%)"}) {
        EXPECT_NEAR(brightnessOf(white).value_or(-1), 1, 0.01) << white;
    }
    for (const char* black : {"#000", "#000000", "#ff000000", "rgba(0, 0, 0, 50%)", "black", "0,0,0"}) {
        EXPECT_NEAR(brightnessOf(black).value_or(-1), 0, 0.01) << black;
    }
    EXPECT_NEAR(brightnessOf("#edeceb").value_or(-1), 0.925, 0.01);
}

TEST(ThemeColorTest, GreenIsBrighterThanBlue) {
    EXPECT_GT(brightnessOf("#00ff00").value_or(-1), brightnessOf("#0000ff").value_or(2));
}

TEST(ThemeColorTest, AGradientIsAsBrightAsItsStopsTogether) {
    EXPECT_NEAR(
        brightnessOf("qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 rgba(0, 0, 0, 80%), stop:1 #fff)")
            .value_or(-1),
        0.5, 0.01);
}

TEST(ThemeColorTest, ThroughAFaintColorTheGroundIsSeen) {
    EXPECT_EQ(brightnessOf("rgba(0, 0, 0, 20%)"), std::nullopt);
    EXPECT_EQ(brightnessOf("#20ffffff"), std::nullopt);
    EXPECT_EQ(brightnessOf("rgba(255, 255, 255, 0)"), std::nullopt);
}

TEST(ThemeColorTest, OtherTextsAreNoColors) {
    for (const char* other :
         {"", "#", "#12", "#ggg", "#1234567", "palette(window)", "url(panel.svg)", "rgb(1,2)", "1,2,3,4,5",
          "rgb(1,2,x)", "qlineargradient(x1:0)", "qlineargradient(stop:0)", "qlineargradient(stop:0 x)",
          "none"}) {
        EXPECT_EQ(brightnessOf(other), std::nullopt) << other;
    }
}

} // namespace tarnwick
