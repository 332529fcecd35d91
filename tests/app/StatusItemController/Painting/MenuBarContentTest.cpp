// The composed image of icon and text.
#include "app/StatusItemController/Painting/MenuBarContent.h"

#include "app/StatusItemController/Painting/TabularLine.h"
#include "core/MenuBarTitle.h"
#include "tests/app/StatusItemController/Painting/Ink.h"

#include <QFontDatabase>

#include <cmath>
#include <gtest/gtest.h>

namespace tarnwick {

using test::inkOf;

TEST(MenuBarContent, WithoutAnIconItIsAsWideAsTheTextsSlot) {
    EXPECT_EQ(MenuBarContent::image(nullptr, "42ms", 50)->size(), QSizeF(50, 14));
}

TEST(MenuBarContent, AnIconTakesItsSlotAndFivePointsMore) {
    const TemplateImagePtr image = MenuBarContent::image(MenuBarIcon::bars(3), "42ms", 50);

    EXPECT_EQ(image->size(), QSizeF(MenuBarContent::iconSlot() + 5 + 50, 14));
}

TEST(MenuBarContent, TheIconsSlotHoldsEveryIcon) {
    EXPECT_EQ(MenuBarContent::iconSlot(), 19);
    EXPECT_GE(MenuBarContent::iconSlot(), MenuBarIcon::failed()->size().width());
}

TEST(MenuBarContent, ItIsDescribedByItsTitle) {
    EXPECT_EQ(
        MenuBarContent::image(MenuBarIcon::bars(3), "42ms (3%)", 80)->accessibleDescription(), "42ms (3%)");
}

TEST(MenuBarContent, ANarrowIconStandsInTheMiddleOfItsSlotOnWholePoints) {
    const MenuBarContent::Layout layout = MenuBarContent::layout(QSizeF(16, 12), 50);

    EXPECT_EQ(layout.iconOrigin, QPointF(2, 1));
    EXPECT_EQ(layout.textOrigin, QPointF(24, 11));
}

TEST(MenuBarContent, TheTextStandsThreePointsAboveTheLowerEdge) {
    const QImage image = MenuBarContent::image(nullptr, "88ms", 60)->image(2);

    EXPECT_LT(inkOf(image, QRect(0, 23, image.width(), 5)), 1);
    EXPECT_GT(inkOf(image, QRect(0, 19, image.width(), 3)), 10);
}

TEST(MenuBarContent, TheTextStaysInsideTheWidthMeasuredForIt) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        const double width = MenuBarContent::lineWidth("88ms (88%)");
        const QImage image = MenuBarContent::image(nullptr, "88ms (88%)", width + 20)->image(scale);
        const int end = static_cast<int>(std::ceil(width * scale)) + 1;

        EXPECT_GT(inkOf(image, QRect(0, 0, end, image.height())), 20) << scale;
        EXPECT_EQ(inkOf(image, QRect(end, 0, image.width() - end, image.height())), 0) << scale;
    }
}

TEST(MenuBarContent, WidthsAreWholePoints) {
    const double width = MenuBarContent::lineWidth("42ms");

    EXPECT_GT(width, 0);
    EXPECT_EQ(width, std::round(width));
}

TEST(MenuBarContent, ChangingDigitsDoNotChangeTheWidth) {
    EXPECT_EQ(MenuBarContent::lineWidth("11ms (11%)"), MenuBarContent::lineWidth("88ms (88%)"));
}

TEST(TabularLine, DigitsAreEquallyWideInEveryFont) {
    for (const QString& family : QFontDatabase::families()) {
        QFont font(family);
        font.setPixelSize(13);

        EXPECT_NEAR(TabularLine(font, "1171").width(), TabularLine(font, "8888").width(), 0.05)
            << family.toStdString();
    }
}

} // namespace tarnwick
