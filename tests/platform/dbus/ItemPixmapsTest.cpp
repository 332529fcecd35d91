// The images of the status item as a panel gets them.
#include "platform/dbus/ItemPixmaps.h"

#include "FakePainter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Form = StatusItem::PanelFace;

} // namespace

TEST(ItemPixmapsTest, BytesComeAsAlphaRedGreenBlue) {
    const Pixmap pixmap{.width = 2, .height = 1, .pixels = {0x11223344, 0xFF00A0B0}};

    EXPECT_THAT(networkBytes(pixmap), testing::ElementsAre(0x11, 0x22, 0x33, 0x44, 0xFF, 0x00, 0xA0, 0xB0));
}

TEST(ItemPixmapsTest, ThereIsOneImageForEachUsualHeight) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter);

    std::vector<int> heights;
    for (const Pixmap& image : pixmaps.images({}, Form::square, Ink::light)) {
        heights.push_back(image.height);
    }

    EXPECT_THAT(heights, testing::ElementsAre(16, 22, 24, 32, 44, 48, 64));
}

TEST(ItemPixmapsTest, TheSameIsNotPaintedTwice) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter);
    const StatusFace face{.activeBars = 3};

    (void)pixmaps.images(face, Form::square, Ink::light);
    const int paintings = painter.paintings;
    (void)pixmaps.images(face, Form::square, Ink::light);

    EXPECT_EQ(painter.paintings, paintings);
}

TEST(ItemPixmapsTest, AnotherInkIsPaintedAnew) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter);
    const std::uint32_t light = pixmaps.images({}, Form::square, Ink::light).front().pixels.front();

    const std::uint32_t dark = pixmaps.images({}, Form::square, Ink::dark).front().pixels.front();

    EXPECT_EQ(light, 0x80F4F4F0U);
    EXPECT_EQ(dark, 0x80242420U);
}

TEST(ItemPixmapsTest, AnotherFormIsPaintedAnew) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter);
    (void)pixmaps.images({}, Form::square, Ink::light);

    EXPECT_EQ(pixmaps.images({}, Form::wide, Ink::light).front().width, 48);
}

} // namespace tarnwick
