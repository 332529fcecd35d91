// The icon that is painted at each size at which it is wanted.
#include "platform/qt/FaceIcon.h"

#include <QImage>
#include <QPainter>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

/// One color for each number of bars and each ink.
class PlainPainter final : public FacePainter {
public:
    [[nodiscard]] Pixmap paint(
        const StatusFace& face, StatusItem::Form form, int height, Ink ink) const override {
        painted.emplace_back(form, height);
        return {.width = height, .height = height, .pixels = std::vector(area(height), color(face, ink))};
    }

    [[nodiscard]] double textWidth(const std::string& text) const override {
        return static_cast<double>(text.size());
    }

    static std::uint32_t color(const StatusFace& face, Ink ink) {
        return 0xff000000U | static_cast<std::uint32_t>(face.activeBars) << 8U
               | (ink == Ink::light ? 0xffU : 0U);
    }

    mutable std::vector<std::pair<StatusItem::Form, int>> painted;

private:
    static std::size_t area(int height) {
        return static_cast<std::size_t>(height) * static_cast<std::size_t>(height);
    }
};

class FaceIconTest : public testing::Test {
protected:
    [[nodiscard]] QImage image(const QIcon& icon, int side, double scale = 1) const {
        return icon.pixmap(QSize(side, side), scale).toImage();
    }

    PlainPainter painter_;
    StatusFace face_{.activeBars = 3};
};

constexpr auto square = StatusItem::Form::square;

} // namespace

TEST_F(FaceIconTest, NothingIsPaintedBeforeItIsAskedFor) {
    const QIcon icon = faceIcon(face_, painter_, Ink::dark);

    EXPECT_FALSE(icon.isNull());
    EXPECT_TRUE(painter_.painted.empty());
}

TEST_F(FaceIconTest, ThePixmapIsTheSquareFaceAtThatSize) {
    const QIcon icon = faceIcon(face_, painter_, Ink::light);

    const QImage painted = image(icon, 22);

    EXPECT_EQ(painted.size(), QSize(22, 22));
    EXPECT_EQ(painted.pixel(0, 0), PlainPainter::color(face_, Ink::light));
    EXPECT_THAT(painter_.painted, testing::ElementsAre(std::pair(square, 22)));
}

TEST_F(FaceIconTest, ADenseScreenGetsAllItsPixels) {
    const QIcon icon = faceIcon(face_, painter_, Ink::dark);

    EXPECT_EQ(image(icon, 22, 2).size(), QSize(44, 44));

    EXPECT_THAT(painter_.painted, testing::ElementsAre(std::pair(square, 44)));
}

TEST_F(FaceIconTest, InAnOblongPlaceTheSquareStandsInTheMiddle) {
    const QIcon icon = faceIcon(face_, painter_, Ink::dark);
    QImage place(40, 24, QImage::Format_ARGB32);
    place.fill(Qt::transparent);
    QPainter onPlace(&place);

    icon.paint(&onPlace, place.rect());
    onPlace.end();

    EXPECT_THAT(painter_.painted, testing::ElementsAre(std::pair(square, 24)));
    EXPECT_EQ(place.pixel(7, 12), 0U);
    EXPECT_EQ(place.pixel(8, 0), PlainPainter::color(face_, Ink::dark));
    EXPECT_EQ(place.pixel(31, 23), PlainPainter::color(face_, Ink::dark));
    EXPECT_EQ(place.pixel(32, 12), 0U);
}

TEST_F(FaceIconTest, AnIconKeepsTheFaceItWasMadeFor) {
    const QIcon icon = faceIcon(face_, painter_, Ink::dark);
    const StatusFace made = face_;
    face_.activeBars = 5;

    EXPECT_EQ(image(icon, 16).pixel(0, 0), PlainPainter::color(made, Ink::dark));
}

} // namespace tarnwick
