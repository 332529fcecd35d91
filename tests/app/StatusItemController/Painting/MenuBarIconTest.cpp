// The bars and the triangle of the status item.
#include "app/StatusItemController/Painting/MenuBarIcon.h"

#include "tests/app/StatusItemController/Painting/Ink.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using test::inkAt;
using test::inkOfColumn;
using testing::DoubleNear;
using testing::ElementsAre;

class MenuBarIconAtScale : public testing::TestWithParam<double> {};

INSTANTIATE_TEST_SUITE_P(Screens, MenuBarIconAtScale, testing::Values(1, 1.25, 1.5, 2, 3));

} // namespace

TEST(MenuBarIcon, NoneAndAllBarsAreNineteenByFourteenPoints) {
    EXPECT_EQ(MenuBarIcon::bars(0, 5)->size(), QSizeF(19, 14));
    EXPECT_EQ(MenuBarIcon::bars(5, 5)->size(), QSizeF(19, 14));
}

TEST(MenuBarIcon, TheSameCountIsTheIdenticalImage) {
    const TemplateImagePtr first = MenuBarIcon::bars(3);

    EXPECT_EQ(MenuBarIcon::bars(3), first);
    EXPECT_NE(MenuBarIcon::bars(4), first);
    EXPECT_NE(MenuBarIcon::bars(3, 4), first);
    EXPECT_EQ(MenuBarIcon::failed(), MenuBarIcon::failed());
}

TEST(MenuBarIcon, BarsGrowByEqualStepsToTheQuarterPoint) {
    std::vector<QRectF> rects;
    for (const MenuBarIcon::Bar& bar : MenuBarIcon::barGeometry(2, 5)) {
        rects.push_back(bar.rect);
    }

    EXPECT_THAT(
        rects, ElementsAre(
                   QRectF(0, 11, 3, 3), QRectF(4, 8.25, 3, 5.75), QRectF(8, 5.5, 3, 8.5),
                   QRectF(12, 2.75, 3, 11.25), QRectF(16, 0, 3, 14)));
}

TEST(MenuBarIcon, InactiveBarsAreFaint) {
    std::vector<double> opacities;
    for (const MenuBarIcon::Bar& bar : MenuBarIcon::barGeometry(2, 5)) {
        opacities.push_back(bar.opacity);
    }

    EXPECT_THAT(opacities, ElementsAre(1.0, 1.0, 0.3, 0.3, 0.3));
}

TEST(MenuBarIcon, ItIsDescribedInWords) {
    EXPECT_EQ(MenuBarIcon::bars(3)->accessibleDescription(), "Connection quality 3 of 5");
    EXPECT_EQ(MenuBarIcon::failed()->accessibleDescription(), "Connection down");
}

TEST(MenuBarIconDeathTest, NoBarsAtAllIsAProgrammingError) {
    EXPECT_DEATH(static_cast<void>(MenuBarIcon::barGeometry(0, 0)), "");
    EXPECT_DEATH(static_cast<void>(MenuBarIcon::bars(0, 0)), "");
    EXPECT_DEATH(static_cast<void>(MenuBarIcon::bars(3, -1)), "");
}

TEST_P(MenuBarIconAtScale, SidesOfBarsAreSharp) {
    const double scale = GetParam();
    const QImage image = MenuBarIcon::bars(5)->image(scale);
    const int row = static_cast<int>(std::round(14 * scale) - std::round(1.5 * scale));

    for (int x = 0; x < image.width(); ++x) {
        EXPECT_THAT(inkAt(image, x, row), testing::AnyOf(0, 255)) << "column " << x;
    }
}

TEST_P(MenuBarIconAtScale, AGapStaysBetweenBars) {
    const std::vector<MenuBarIcon::Bar> bars = MenuBarIcon::barPixels(5, 5, GetParam());

    for (std::size_t index = 1; index < bars.size(); ++index) {
        EXPECT_GE(bars[index].rect.left() - bars[index - 1].rect.right(), 1) << "before bar " << index;
    }
}

TEST_P(MenuBarIconAtScale, EachBarCoversItsHeightExactly) {
    const double scale = GetParam();
    const QImage image = MenuBarIcon::bars(5)->image(scale);

    for (const MenuBarIcon::Bar& bar : MenuBarIcon::barPixels(5, 5, scale)) {
        const int middle = static_cast<int>(bar.rect.center().x());
        EXPECT_THAT(inkOfColumn(image, middle), DoubleNear(bar.rect.height(), 0.12));
    }
}

TEST_P(MenuBarIconAtScale, TheImageIsNoLargerThanItsPointsTake) {
    const double scale = GetParam();
    const QImage image = MenuBarIcon::bars(0)->image(scale);

    EXPECT_EQ(image.width(), static_cast<int>(std::ceil(19 * scale)));
    EXPECT_EQ(image.height(), static_cast<int>(std::ceil(14 * scale)));
}

TEST(MenuBarIcon, TheTriangleFillsItsImage) {
    const QRectF bounds = MenuBarIcon::trianglePath().boundingRect();
    const QSizeF size = MenuBarIcon::failed()->size();

    EXPECT_TRUE(QRectF(QPointF(-0.1, -0.1), size + QSizeF(0.2, 0.2)).contains(bounds));
    EXPECT_GT(bounds.width(), size.width() - 1);
    EXPECT_GT(bounds.height(), size.height() - 1);
}

TEST(MenuBarIcon, TheTriangleIsHollowAroundItsMark) {
    const QPainterPath& path = MenuBarIcon::trianglePath();

    EXPECT_TRUE(path.contains(QPointF(8, 7))) << "the mark";
    EXPECT_TRUE(path.contains(QPointF(8, 10.5))) << "its dot";
    EXPECT_TRUE(path.contains(QPointF(8, 13.2))) << "the frame";
    EXPECT_FALSE(path.contains(QPointF(5.5, 10))) << "beside the mark";
    EXPECT_FALSE(path.contains(QPointF(8, 9.4))) << "above the dot";
}

} // namespace tarnwick
