// Colors of latencies, on light and on dark ground.
#include "app/ViewStyle/LatencyPalette.h"

#include <QPalette>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

QPalette ground(const QColor& window, const QColor& text) {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    return palette;
}

const QPalette& light() {
    static const QPalette palette = ground(QColor(250, 250, 250), Qt::black);
    return palette;
}

const QPalette& dark() {
    static const QPalette palette = ground(QColor(40, 42, 48), Qt::white);
    return palette;
}

double luminance(const QColor& color) {
    const auto linear = [](float part) {
        return part <= 0.04045F ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// As accessibility guidelines count it: 4.5 and more is legible as small text, 3 as a shape.
double contrast(const QColor& one, const QColor& other) {
    const auto [darker, brighter] = std::minmax({luminance(one), luminance(other)});
    return (brighter + 0.05) / (darker + 0.05);
}

} // namespace

TEST(LatencyPalette, OnLightGroundColorsAreDeep) {
    const LatencyPalette palette(light());

    EXPECT_EQ(palette.good(), QColor::fromRgbF(0.14F, 0.54F, 0.24F));
    EXPECT_EQ(palette.warn(), QColor::fromRgbF(0.76F, 0.42F, 0.0F));
    EXPECT_EQ(palette.bad(), QColor::fromRgbF(0.77F, 0.16F, 0.11F));
}

TEST(LatencyPalette, TheGroundDecides) {
    EXPECT_FALSE(LatencyPalette::isDark(light()));
    EXPECT_TRUE(LatencyPalette::isDark(dark()));
    EXPECT_NE(LatencyPalette(light()).good(), LatencyPalette(dark()).good());
}

TEST(LatencyPalette, EveryColorStandsOutFromItsGround) {
    for (const QPalette& ground : {light(), dark()}) {
        const LatencyPalette palette(ground);
        const QColor window = ground.color(QPalette::Window);

        EXPECT_GT(contrast(palette.good(), window), 4);
        EXPECT_GT(contrast(palette.warn(), window), 3.5);
        EXPECT_GT(contrast(palette.bad(), window), 4.5);
    }
}

TEST(LatencyPalette, TonesHaveTheirColors) {
    const LatencyPalette palette(light());

    EXPECT_EQ(palette.of(QualityTone::neutral), palette.secondary());
    EXPECT_EQ(palette.of(QualityTone::good), palette.good());
    EXPECT_EQ(palette.of(QualityTone::middle), palette.warn());
    EXPECT_EQ(palette.of(QualityTone::bad), palette.bad());
}

TEST(LatencyPalette, AnOutageIsALittleTransparentAndAnEmptySlotWholly) {
    const LatencyPalette palette(light());
    const QColor outage = palette.of(LatencyChart::BarTone::outage);

    EXPECT_NEAR(outage.alphaF(), 0.85, 0.01);
    EXPECT_EQ(outage.rgb(), palette.bad().rgb());
    EXPECT_EQ(palette.of(LatencyChart::BarTone::none).alpha(), 0);
}

} // namespace tarnwick
