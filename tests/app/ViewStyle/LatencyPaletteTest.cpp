// Colors of latencies, on light and on dark ground.
#include "app/ViewStyle/LatencyPalette.h"

#include "platform/qt/Appearance.h"
#include "tests/support/Contrast.h"

#include <QApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include <utility>

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

/// In our own colors.
QPalette present(bool dark, bool contrast) {
    Appearance::prefer(dark, contrast);
    return QApplication::palette();
}

/// As it is seen on its ground.
QColor blended(const QColor& color, const QColor& ground) {
    const auto mix = [&](float over, float under) { return under + (over - under) * color.alphaF(); };
    return QColor::fromRgbF(
        mix(color.redF(), ground.redF()), mix(color.greenF(), ground.greenF()),
        mix(color.blueF(), ground.blueF()));
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

TEST(LatencyPalette, EveryTextIsLegibleOnOurGrounds) {
    constexpr double enough = 4.5; // for small text, by the accessibility guidelines
    for (const auto& [dark, contrast] :
         {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
        const QPalette ours = present(dark, contrast);
        const QColor window = ours.color(QPalette::Window);
        const LatencyPalette palette(ours);
        for (const QColor& text :
             {palette.primary(), palette.secondary(), palette.warnText(), palette.bad()}) {
            EXPECT_GE(test::contrast(blended(text, window), window), enough)
                << dark << text.name().toStdString();
        }
    }
}

TEST(LatencyPalette, EveryShapeStandsOutFromOurGrounds) {
    // The guidelines ask for 3. Bars are small.
    for (const bool dark : {false, true}) {
        const QPalette ours = present(dark, false);
        const LatencyPalette palette(ours);
        const QColor window = ours.color(QPalette::Window);
        EXPECT_GT(test::contrast(palette.good(), window), 4) << dark;
        EXPECT_GT(test::contrast(palette.warn(), window), 3.5) << dark;
        EXPECT_GT(test::contrast(palette.bad(), window), 4.5) << dark;
    }
}

TEST(LatencyPalette, WhereMoreContrastIsWantedQuietTextIsLessQuiet) {
    const LatencyPalette usual(present(false, false));
    const LatencyPalette strong(present(false, true));

    EXPECT_GT(strong.secondary().alphaF(), usual.secondary().alphaF());
    EXPECT_GT(strong.tertiary().alphaF(), usual.tertiary().alphaF());
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
