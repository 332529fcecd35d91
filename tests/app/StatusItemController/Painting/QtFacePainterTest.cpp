// Faces as pixels, in each form that panels take.
#include "app/StatusItemController/Painting/QtFacePainter.h"

#include "app/StatusItemController/Painting/MenuBarContent.h"
#include "tests/app/StatusItemController/Painting/Ink.h"
#include "tests/support/Contrast.h"

#include <QPainter>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;

class QtFacePainterTest : public testing::Test {
protected:
    [[nodiscard]] Pixmap paint(const StatusFace& what, Form form, int height, Ink ink = Ink::light) const {
        return painter.paint(what, form, height, ink);
    }

    QtFacePainter painter;
    StatusFace face{
        .icon = StatusFace::Icon::bars,
        .activeBars = 4,
        .title = "42ms",
        .figure = "42",
        .widestTitle = "88ms",
        .textSlot = 40};
};

} // namespace

TEST_F(QtFacePainterTest, TheSquareIsAsWideAsHighAtEverySize) {
    for (int height = 16; height <= 64; ++height) {
        const Pixmap pixmap = paint(face, Form::square, height);

        EXPECT_EQ(pixmap.width, height);
        EXPECT_EQ(pixmap.height, height);
        EXPECT_EQ(pixmap.pixels.size(), static_cast<std::size_t>(height * height));
    }
}

TEST_F(QtFacePainterTest, TheWideFormIsAsHighAsAskedForAndAsWideAsItsText) {
    for (const int height : {16, 22, 24, 26, 44, 64}) {
        const Pixmap pixmap = paint(face, Form::wide, height);
        const double scale = std::round(height * 14 / 22.0) / 14;

        EXPECT_EQ(pixmap.height, height);
        EXPECT_NEAR(pixmap.width, (19 + 5 + 40 + 2) * scale, 2) << height;
    }
}

TEST_F(QtFacePainterTest, AWiderTextSlotMakesTheWideFormWider) {
    StatusFace wider = face;
    wider.textSlot = 60;

    EXPECT_EQ(paint(wider, Form::wide, 22).width, paint(face, Form::wide, 22).width + 20);
}

TEST_F(QtFacePainterTest, InAWideFormOfMenuBarHeightTheBarsAreDrawnPointByPoint) {
    const QImage image = test::toImage(paint(face, Form::wide, 22));

    // One point of margin, four above and below the image of fourteen points.
    for (const MenuBarIcon::Bar& bar : MenuBarIcon::barGeometry(4, 5)) {
        const int x = 1 + static_cast<int>(bar.rect.center().x());
        EXPECT_NEAR(test::inkOfColumn(image, x), bar.rect.height() * bar.opacity, 0.12);
        EXPECT_GT(test::inkAt(image, x, 17), 0);
        EXPECT_EQ(test::inkAt(image, x, 18), 0);
    }
}

TEST_F(QtFacePainterTest, TheLabelFormIsTheIconAloneWhateverTheText) {
    StatusFace iconOnly = face;
    iconOnly.title.reset();
    iconOnly.figure.clear();

    EXPECT_EQ(paint(face, Form::label, 22), paint(iconOnly, Form::label, 22));
    EXPECT_EQ(paint(face, Form::label, 22), paint(iconOnly, Form::square, 22));
}

TEST_F(QtFacePainterTest, AFaceOfTextAloneHasNoIconBesideItsLabel) {
    face.icon = StatusFace::Icon::none;
    face.activeBars = 0;

    EXPECT_THAT(paint(face, Form::label, 22).pixels, testing::Each(0U));
}

TEST_F(QtFacePainterTest, TheFiguresChangeShows) {
    StatusFace other = face;
    other.title = "43ms";
    other.figure = "43";

    EXPECT_NE(paint(face, Form::square, 22), paint(other, Form::square, 22));
    EXPECT_NE(paint(face, Form::wide, 22), paint(other, Form::wide, 22));
}

TEST_F(QtFacePainterTest, EachInkTintsAllThatIsDrawn) {
    for (const Form form : {Form::square, Form::wide, Form::label}) {
        for (const auto& [ink, isLight] : {std::pair{Ink::light, true}, std::pair{Ink::dark, false}}) {
            int drawn = 0;
            for (const std::uint32_t pixel : paint(face, form, 24, ink).pixels) {
                // Where there is hardly any ink, rounding changes its color.
                if (qAlpha(pixel) > 60) {
                    ++drawn;
                    EXPECT_EQ(qGray(pixel) > 127, isLight);
                }
            }
            EXPECT_GT(drawn, 30);
        }
    }
}

TEST_F(QtFacePainterTest, InkDoesNotChangeWhatIsCovered) {
    const QImage light = test::toImage(paint(face, Form::square, 22, Ink::light));
    const QImage dark = test::toImage(paint(face, Form::square, 22, Ink::dark));

    for (int y = 0; y < 22; ++y) {
        for (int x = 0; x < 22; ++x) {
            EXPECT_EQ(test::inkAt(light, x, y), test::inkAt(dark, x, y));
        }
    }
}

TEST_F(QtFacePainterTest, OnAPlateTheFaceCanBeReadOnAnyGround) {
    face.activeBars = 5;
    for (const Ink ink : {Ink::lightOnPlate, Ink::darkOnPlate}) {
        for (const QRgb ground : {0xFF000000U, 0xFF2B2E36U, 0xFF808080U, 0xFFEDECEBU, 0xFFFFFFFFU}) {
            const QImage drawn = test::toImage(paint(face, Form::label, 24, ink));
            QImage panel(drawn.size(), QImage::Format_ARGB32);
            panel.fill(ground);
            QPainter(&panel).drawImage(0, 0, drawn);

            const QColor ofHighestBar = panel.pixelColor(19, 12);
            const QColor aboveThem = panel.pixelColor(12, 2);
            EXPECT_GE(test::contrast(ofHighestBar, aboveThem), 4.5) << std::hex << ground;
        }
    }
}

TEST_F(QtFacePainterTest, APlateIsAsHighAsAskedForAndHasRoundCorners) {
    for (const Form form : {Form::square, Form::wide, Form::label}) {
        for (const int height : {16, 22, 24, 44}) {
            const Pixmap plate = paint(face, form, height, Ink::darkOnPlate);
            EXPECT_EQ(plate.height, height);
            const QImage image = test::toImage(plate);
            EXPECT_LT(test::inkAt(image, 0, 0), test::inkAt(image, plate.width / 2, 0) / 2);
        }
    }
}

TEST_F(QtFacePainterTest, ADownIsTheSameTriangleInEverySquareFace) {
    const StatusFace iconOnly{.isDown = true, .icon = StatusFace::Icon::failed};
    StatusFace withText = iconOnly;
    withText.title = "Failed";
    withText.textSlot = 40;
    StatusFace textOnly = withText;
    textOnly.icon = StatusFace::Icon::none;
    const Pixmap triangle = paint(iconOnly, Form::square, 22);

    EXPECT_EQ(paint(withText, Form::square, 22), triangle);
    EXPECT_EQ(paint(textOnly, Form::square, 22), triangle);
    EXPECT_EQ(paint(withText, Form::label, 22), triangle);
}

TEST_F(QtFacePainterTest, ItMeasuresTextAsTheImageIsComposed) {
    EXPECT_EQ(painter.textWidth("88ms (8%)"), MenuBarContent::lineWidth("88ms (8%)"));
}

} // namespace tarnwick
