// The images of the status item as a panel gets them.
#include "platform/panel/ItemPixmaps.h"

#include "tests/platform/panel/FakePainter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;
using testing::ElementsAre;
using testing::IsSupersetOf;

std::vector<double> usualScreen() {
    return {1};
}

} // namespace

TEST(ItemPixmapsTest, BytesComeAsAlphaRedGreenBlue) {
    const Pixmap pixmap{.width = 2, .height = 1, .pixels = {0x11223344, 0xFF00A0B0}};

    EXPECT_THAT(networkBytes(pixmap), ElementsAre(0x11, 0x22, 0x33, 0x44, 0xFF, 0x00, 0xA0, 0xB0));
}

TEST(ItemPixmapsTest, ThereIsOneImageForEachUsualHeight) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter, usualScreen);

    std::vector<int> heights;
    for (const Pixmap& image : pixmaps.images({}, Form::square, Ink::light)) {
        heights.push_back(image.height);
    }

    EXPECT_THAT(heights, ElementsAre(16, 22, 24, 32, 48, 64));
}

TEST(ItemPixmapsTest, UsualPanelsNeedNotScaleTheImageWhateverTheScreensScale) {
    EXPECT_THAT(pixmapHeights({1.25}), IsSupersetOf({20, 28, 30, 40}));
    EXPECT_THAT(pixmapHeights({1.5}), IsSupersetOf({24, 33, 36, 48}));
    EXPECT_THAT(pixmapHeights({2}), IsSupersetOf({32, 44, 48, 64}));
    EXPECT_THAT(pixmapHeights({3}), IsSupersetOf({48, 66, 72, 96}));
}

TEST(ItemPixmapsTest, PanelsThatLeaveScalingToTheDisplayFindTheirSizesToo) {
    EXPECT_THAT(pixmapHeights({3}), IsSupersetOf({16, 22, 24, 32}));
    EXPECT_THAT(pixmapHeights({}), IsSupersetOf({16, 22, 24, 32}));
}

TEST(ItemPixmapsTest, TheLargestCanBeScaledDownWhateverTheScreensScale) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        EXPECT_GE(pixmapHeights({scale}).back(), 64) << scale;
    }
}

TEST(ItemPixmapsTest, HeightsRiseAndNoneComesTwice) {
    EXPECT_THAT(pixmapHeights({2, 1, 2}), ElementsAre(16, 22, 24, 32, 44, 48, 64));
}

TEST(ItemPixmapsTest, AnAbsurdScaleMakesNoAbsurdImages) {
    EXPECT_LE(pixmapHeights({1000}).back(), 128);
    EXPECT_EQ(pixmapHeights({0.1}), pixmapHeights({1}));
}

TEST(ItemPixmapsTest, AfterAScreenOfAnotherScaleItIsPaintedAnew) {
    const FakePainter painter;
    std::vector<double> scales{1};
    ItemPixmaps pixmaps(painter, [&scales] { return scales; });
    (void)pixmaps.images({}, Form::square, Ink::light);
    scales.push_back(3);

    EXPECT_EQ(pixmaps.images({}, Form::square, Ink::light).back().height, 96);
}

TEST(ItemPixmapsTest, TheSameIsNotPaintedTwice) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter, usualScreen);
    const StatusFace face{.activeBars = 3};

    (void)pixmaps.images(face, Form::square, Ink::light);
    const int paintings = painter.paintings;
    (void)pixmaps.images(face, Form::square, Ink::light);

    EXPECT_EQ(painter.paintings, paintings);
}

TEST(ItemPixmapsTest, AnotherInkIsPaintedAnew) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter, usualScreen);
    const std::uint32_t light = pixmaps.images({}, Form::square, Ink::light).front().pixels.front();

    const std::uint32_t dark = pixmaps.images({}, Form::square, Ink::dark).front().pixels.front();

    EXPECT_EQ(light, 0x80F4F4F0U);
    EXPECT_EQ(dark, 0x80242420U);
}

TEST(ItemPixmapsTest, AnotherFormIsPaintedAnew) {
    const FakePainter painter;
    ItemPixmaps pixmaps(painter, usualScreen);
    (void)pixmaps.images({}, Form::square, Ink::light);

    EXPECT_EQ(pixmaps.images({}, Form::wide, Ink::light).front().width, 48);
}

} // namespace tarnwick
