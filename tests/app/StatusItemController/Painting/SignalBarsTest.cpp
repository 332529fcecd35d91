// The signal bars of the menu view.
#include "app/StatusItemController/Painting/SignalBars.h"

#include "tests/app/StatusItemController/Painting/Ink.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace tarnwick {

TEST(SignalBars, TheyFillTheirFrameWithTwoPointsBetweenThem) {
    const std::vector<QRectF> bars = SignalBars::geometry(QRectF(10, 20, 22, 16), 5);

    ASSERT_EQ(bars.size(), 5U);
    for (std::size_t index = 0; index < bars.size(); ++index) {
        const auto place = static_cast<double>(index);
        EXPECT_NEAR(bars[index].left(), 10 + place * 4.8, 1e-9);
        EXPECT_NEAR(bars[index].width(), 2.8, 1e-9);
        EXPECT_NEAR(bars[index].height(), 16 * (place + 1) / 5, 1e-9);
        EXPECT_NEAR(bars[index].bottom(), 36, 1e-9);
    }
}

TEST(SignalBars, ActiveOnesAreColoredAndTheOthersFaint) {
    QImage image(220, 160, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        painter.scale(10, 10);
        SignalBars::draw(painter, QRectF(0, 0, 22, 16), 5, 2, Qt::green, Qt::black);
    }

    EXPECT_EQ(image.pixelColor(62, 120), QColor(Qt::green));
    EXPECT_NEAR(image.pixelColor(110, 120).lightness(), 0.7 * 255, 2);
    EXPECT_EQ(image.pixelColor(110, 20), QColor(Qt::white));
}

TEST(SignalBarsDeathTest, NoneAtAllIsAProgrammingError) {
    EXPECT_DEATH(static_cast<void>(SignalBars::geometry(QRectF(0, 0, 22, 16), 0)), "");
}

} // namespace tarnwick
