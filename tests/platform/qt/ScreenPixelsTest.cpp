// Places on the desktop, in pixels and as panels tell them.
#include "platform/qt/ScreenPixels.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

#include <limits>

namespace tarnwick {

namespace {

constexpr ScreenPoint first{}; ///< the origin of the first monitor

} // namespace

TEST(ScreenPixels, APointOfTheToolkitIsFoundAgain) {
    const QPoint center = QGuiApplication::primaryScreen()->geometry().center();

    const auto [screen, point] = ScreenPixels::locate(ScreenPixels::of(center));

    EXPECT_EQ(screen, QGuiApplication::primaryScreen());
    EXPECT_EQ(point, center);
}

TEST(ScreenPixels, WhatIsOnNoScreenIsNotFound) {
    EXPECT_EQ(ScreenPixels::locate({.x = -5000, .y = 10}).first, nullptr);
}

TEST(ScreenPixels, WithoutX11WhatTheToolkitTellsIsAvailable) {
    const QScreen& screen = *QGuiApplication::primaryScreen();

    EXPECT_EQ(ScreenPixels::available(screen), screen.availableGeometry());
}

TEST(ScreenPixels, AClickAtThePointerStandsAsTold) {
    const ScreenPoint told{.x = 1250, .y = 12};

    EXPECT_EQ(ScreenPixels::clicked(told, {.x = 1258, .y = 20}, first), told);
}

TEST(ScreenPixels, AClickInThePanelsOwnUnitsIsScaledToThePointer) {
    EXPECT_EQ(
        ScreenPixels::clicked({.x = 625, .y = 13}, {.x = 1252, .y = 24}, first),
        (ScreenPoint{.x = 1250, .y = 26}));
    EXPECT_EQ(
        ScreenPixels::clicked({.x = 800, .y = 20}, {.x = 1203, .y = 30}, first),
        (ScreenPoint{.x = 1200, .y = 30}));
}

TEST(ScreenPixels, UnitsOfAPanelMayCountFromItsOwnMonitor) {
    const ScreenPoint second{.x = 1920, .y = 100};

    EXPECT_EQ(
        ScreenPixels::clicked({.x = 1920 + 600, .y = 113}, {.x = 1920 + 1204, .y = 130}, second),
        (ScreenPoint{.x = 1920 + 1200, .y = 126}));
}

TEST(ScreenPixels, UnitsOfAPanelOnASecondMonitorMayCountFromTheDesktop) {
    const ScreenPoint second{.x = 1920, .y = 0};

    EXPECT_EQ(
        ScreenPixels::clicked({.x = 1500, .y = 13}, {.x = 3004, .y = 30}, second),
        (ScreenPoint{.x = 3000, .y = 26}));
}

TEST(ScreenPixels, AClickFarBeyondEveryScreenStandsAsTold) {
    for (const int far : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        const ScreenPoint told{.x = far, .y = far};

        EXPECT_EQ(ScreenPixels::clicked(told, {.x = 10, .y = 10}, first), told);
        EXPECT_EQ(ScreenPixels::clicked(told, {.x = -10, .y = -10}, first), told);
    }
}

TEST(ScreenPixels, WithThePointerElsewhereAClickStandsAsTold) {
    const ScreenPoint told{.x = 1250, .y = 12};

    EXPECT_EQ(ScreenPixels::clicked(told, {.x = 400, .y = 400}, first), told);
}

} // namespace tarnwick
