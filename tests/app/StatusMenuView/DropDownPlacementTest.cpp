// Where the drop-down opens.
#include "app/StatusMenuView/DropDownPlacement.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

constexpr QSize dropDownSize{320, 480};
constexpr QRect screen{0, 0, 1920, 1080};

QRect place(std::optional<QPoint> click, const QRect& available) {
    return DropDownPlacement::place(click, dropDownSize, screen, available);
}

} // namespace

TEST(DropDownPlacement, BelowAPanelAtTheTop) {
    const QRect frame = place(QPoint(900, 12), screen.adjusted(0, 24, 0, 0));

    EXPECT_EQ(frame.top(), 24 + 4);
    EXPECT_EQ(frame.center().x(), 900 - 1);
    EXPECT_EQ(frame.size(), dropDownSize);
}

TEST(DropDownPlacement, AboveAPanelAtTheBottom) {
    const QRect frame = place(QPoint(900, 1070), screen.adjusted(0, 0, 0, -40));

    EXPECT_EQ(frame.bottom(), 1079 - 40 - 4);
    EXPECT_EQ(frame.center().x(), 900 - 1);
}

TEST(DropDownPlacement, BesideAPanelAtTheLeft) {
    const QRect frame = place(QPoint(20, 500), screen.adjusted(48, 0, 0, 0));

    EXPECT_EQ(frame.left(), 48 + 4);
    EXPECT_TRUE(frame.top() < 500 && frame.bottom() > 500);
}

TEST(DropDownPlacement, BesideAPanelAtTheRight) {
    const QRect frame = place(QPoint(1900, 500), screen.adjusted(0, 0, -48, 0));

    EXPECT_EQ(frame.right(), 1919 - 48 - 4);
    EXPECT_TRUE(frame.top() < 500 && frame.bottom() > 500);
}

TEST(DropDownPlacement, APanelThatReservesNoRoomIsKeptClearOfTheClick) {
    EXPECT_EQ(place(QPoint(900, 12), screen).top(), 16);
    EXPECT_EQ(place(QPoint(900, 1067), screen).bottom(), 1062);
}

TEST(DropDownPlacement, ItIsInsideTheAvailableAreaWhereverTheClickIs) {
    const QRect available = screen.adjusted(10, 24, -30, -40);
    for (int x = 0; x < screen.width(); x += 37) {
        for (int y = 0; y < screen.height(); y += 23) {
            EXPECT_TRUE(available.contains(place(QPoint(x, y), available))) << x << ", " << y;
        }
    }
}

TEST(DropDownPlacement, OnASecondScreenItStaysThere) {
    const QRect second(1920, 0, 1280, 1024);
    const QRect frame = DropDownPlacement::place(QPoint(1925, 5), dropDownSize, second, second);

    EXPECT_TRUE(second.contains(frame));
}

TEST(DropDownPlacement, WithoutAClickItIsAtTheUpperRight) {
    const QRect frame = place(std::nullopt, screen.adjusted(0, 24, 0, 0));

    EXPECT_EQ(frame.top(), 28);
    EXPECT_EQ(frame.right(), 1919 - 4);
}

TEST(DropDownPlacement, WithoutAClickItIsAtTheEndOfThePanel) {
    const QRect above = place(std::nullopt, screen.adjusted(0, 0, 0, -40));
    EXPECT_EQ(above.bottomRight(), QPoint(1919 - 4, 1079 - 40 - 4));

    const QRect beside = place(std::nullopt, screen.adjusted(48, 0, 0, 0));
    EXPECT_EQ(beside.bottomLeft(), QPoint(48 + 4, 1079 - 4));

    const QRect atTheRight = place(std::nullopt, screen.adjusted(0, 0, -48, 0));
    EXPECT_EQ(atTheRight.bottomRight(), QPoint(1919 - 48 - 4, 1079 - 4));
}

TEST(DropDownPlacement, WithoutAClickAPanelAtTheTopGoesBeforeADock) {
    const QRect frame = place(std::nullopt, screen.adjusted(0, 24, 0, -60));

    EXPECT_EQ(frame.topRight(), QPoint(1919 - 4, 24 + 4));
}

TEST(DropDownPlacement, WithoutAPanelAndAClickItIsAtTheUpperRight) {
    EXPECT_EQ(place(std::nullopt, screen).topRight(), QPoint(1919 - 4, 4));
}

TEST(DropDownPlacement, OnAScreenThatIsTooSmallItsBeginningIsSeen) {
    const QRect small(0, 0, 300, 400);

    EXPECT_EQ(DropDownPlacement::place(QPoint(10, 10), dropDownSize, small, small).topLeft(), QPoint(4, 4));
}

TEST(DropDownPlacement, APanelInACornerIsTakenForTheSideOnWhichItLies) {
    const QRect frame = place(QPoint(1917, 12), screen.adjusted(0, 24, 0, 0));

    EXPECT_EQ(frame.top(), 24 + 4);
    EXPECT_EQ(frame.right(), 1919 - 4);
}

TEST(DropDownPlacement, AnOverlayLiesBesideThePanelThatWasClicked) {
    const QSize withoutRow(1920, 1040);
    const QSize withoutColumn(1872, 1080);

    EXPECT_EQ(DropDownPlacement::overlaid(QPoint(1900, 20), screen, withoutRow).origin, QPoint(0, 40));
    EXPECT_EQ(DropDownPlacement::overlaid(QPoint(1900, 1060), screen, withoutRow).origin, QPoint(0, 0));
    EXPECT_EQ(DropDownPlacement::overlaid(QPoint(20, 1060), screen, withoutColumn).origin, QPoint(48, 0));
    EXPECT_EQ(DropDownPlacement::overlaid(QPoint(1900, 1060), screen, withoutColumn).origin, QPoint(0, 0));
    EXPECT_EQ(
        DropDownPlacement::overlaid(QPoint(1900, 20), screen, withoutRow).available,
        QRect(0, 40, 1920, 1040));
}

TEST(DropDownPlacement, AnOverlayOfASecondScreenLiesThere) {
    const QRect second(1920, 0, 1280, 1024);

    EXPECT_EQ(
        DropDownPlacement::overlaid(QPoint(3000, 10), second, QSize(1280, 984)).origin, QPoint(1920, 40));
}

TEST(DropDownPlacement, AnOverlayOfTheWholeScreenLeavesRoomForThePanelThatWasClicked) {
    const auto available = [](QPoint click) {
        return DropDownPlacement::overlaid(click, screen, screen.size()).available;
    };

    EXPECT_EQ(available({1900, 1070}), screen.adjusted(0, 0, 0, -44));
    EXPECT_EQ(available({900, 10}), screen.adjusted(0, 44, 0, 0));
    EXPECT_EQ(available({10, 500}), screen.adjusted(44, 0, 0, 0));
    EXPECT_EQ(available({1915, 500}), screen.adjusted(0, 0, -44, 0));
    EXPECT_EQ(available({900, 500}), screen); // a key press, or a menu
}

TEST(DropDownPlacement, InTheMiddleItIsAsFarFromEachSide) {
    const QRect available(0, 30, 1920, 1050);
    const QRect frame = DropDownPlacement::inMiddle(dropDownSize, available);

    EXPECT_EQ(frame.size(), dropDownSize);
    EXPECT_NEAR(frame.left() - available.left(), available.right() - frame.right(), 1);
    EXPECT_NEAR(frame.top() - available.top(), available.bottom() - frame.bottom(), 1);
}

TEST(DropDownPlacement, InTheMiddleOfAScreenThatIsTooSmallItsBeginningIsSeen) {
    const QRect small(0, 0, 300, 400);

    EXPECT_EQ(DropDownPlacement::inMiddle(dropDownSize, small).topLeft(), QPoint(4, 4));
}

TEST(DropDownPlacement, AScreenToldInPixelsIsCountedInTheOverlaysUnits) {
    const QRect pixels(1600, 0, 2560, 1600);

    EXPECT_EQ(DropDownPlacement::inUnits(pixels, {1280, 768}, 2), QRect(1600, 0, 1280, 800));
}

TEST(DropDownPlacement, AScreenToldInUnitsStaysAsItIs) {
    const QRect units(1600, 0, 1280, 800);

    EXPECT_EQ(DropDownPlacement::inUnits(units, {1210, 768}, 2), units);
    EXPECT_EQ(DropDownPlacement::inUnits(units, {1280, 768}, 1), units);
}

TEST(DropDownPlacement, WithoutAClickAnOverlayIsTakenAsItIs) {
    const auto overlaid = DropDownPlacement::overlaid(std::nullopt, screen, QSize(1920, 1040));

    EXPECT_EQ(overlaid.origin, screen.topLeft());
    EXPECT_EQ(overlaid.available, QRect(0, 0, 1920, 1040));
}

} // namespace tarnwick
