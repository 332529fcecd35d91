// The figure over the bars, for panels that show square images.
#include "app/StatusItemController/Painting/SquareFace.h"

#include "tests/app/StatusItemController/Painting/Ink.h"

#include <QPainter>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ranges>

namespace tarnwick {

namespace {

using SquareFace::Content;
using SquareFace::Layout;

const std::array figures{"0", "9", "42", "88", "0.1s", "1.2s", "8.8s", "9.9s", "…"};

Content figureOverBars(const char* figure) {
    return {.figure = QString::fromUtf8(figure), .bars = true, .activeBars = 3};
}

QImage drawn(const Content& content, int side) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    SquareFace::draw(painter, content, side);
    return image;
}

/// Every size that panels ask for; those whose bars are too small for rounded corners.
constexpr std::ranges::iota_view sizes{16, 65};
constexpr std::ranges::iota_view smallSizes{16, 32};

} // namespace

TEST(SquareFace, ItShowsTheFigureOverTheBars) {
    const StatusFace face{
        .icon = StatusFace::Icon::bars, .activeBars = 4, .title = "42ms (3%)", .figure = "42"};

    EXPECT_EQ(SquareFace::content(face), (Content{.figure = "42", .bars = true, .activeBars = 4}));
}

TEST(SquareFace, WithoutATitleItShowsTheBarsAlone) {
    const StatusFace face{.icon = StatusFace::Icon::bars, .activeBars = 4};

    EXPECT_EQ(SquareFace::content(face), (Content{.bars = true, .activeBars = 4}));
}

TEST(SquareFace, WithoutAnIconItShowsTheFigureAlone) {
    const StatusFace face{.icon = StatusFace::Icon::none, .title = "42ms", .figure = "42"};

    EXPECT_EQ(SquareFace::content(face), (Content{.figure = "42"}));
}

TEST(SquareFace, ADownIsATriangleWithAndWithoutAnIcon) {
    const StatusFace withIcon{.isDown = true, .icon = StatusFace::Icon::failed, .title = "Failed"};
    const StatusFace textOnly{.isDown = true, .icon = StatusFace::Icon::none, .title = "Failed"};

    EXPECT_EQ(SquareFace::content(withIcon), Content{.triangle = true});
    EXPECT_EQ(SquareFace::content(textOnly), Content{.triangle = true});
}

TEST(SquareFace, BeforeTheFirstReplyItShowsTheEllipsis) {
    const StatusFace face{.icon = StatusFace::Icon::bars, .title = "…", .figure = "…"};

    EXPECT_EQ(SquareFace::content(face), (Content{.figure = "…", .bars = true}));
}

TEST(SquareFace, BarsHaveOneWidthAndGrowByEqualSteps) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        for (const Content& content : {Content{.bars = true}, figureOverBars("42")}) {
            const std::vector<QRect> bars = SquareFace::layout(content, side).bars;
            ASSERT_EQ(bars.size(), 5U);

            for (std::size_t index = 1; index < bars.size(); ++index) {
                EXPECT_EQ(bars[index].width(), bars[0].width());
                EXPECT_EQ(bars[index].bottom(), bars[0].bottom());
                EXPECT_EQ(bars[index].left() - bars[index - 1].left(), bars[1].left() - bars[0].left());
                EXPECT_EQ(
                    bars[index].height() - bars[index - 1].height(), bars[1].height() - bars[0].height());
                EXPECT_GT(bars[index].height(), bars[index - 1].height());
                EXPECT_GT(bars[index].left(), bars[index - 1].right() + 1) << "no gap";
            }
        }
    }
}

TEST(SquareFace, EverythingIsInsideTheSquare) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const QRect square(0, 0, side, side);
        const Layout both = SquareFace::layout(figureOverBars("42"), side);

        EXPECT_TRUE(square.contains(both.figure));
        for (const QRect& bar : both.bars) {
            EXPECT_TRUE(square.contains(bar));
        }
        for (const QRect& bar : SquareFace::layout({.bars = true}, side).bars) {
            EXPECT_TRUE(square.contains(bar));
        }
        EXPECT_TRUE(square.contains(SquareFace::layout({.triangle = true}, side).triangle));
        EXPECT_TRUE(square.contains(SquareFace::layout({.figure = "42"}, side).figure));
    }
}

TEST(SquareFace, TheFigureStandsClearOfTheBars) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const Layout layout = SquareFace::layout(figureOverBars("42"), side);

        EXPECT_LT(layout.figure.bottom() + 1, layout.bars.back().top());
    }
}

TEST(SquareFace, FiguresOfEveryLengthFitTheirRoom) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const QRect room = SquareFace::layout(figureOverBars("42"), side).figure;

        for (const char* figure : figures) {
            const QRectF bounds = SquareFace::figurePath(QString::fromUtf8(figure), room).boundingRect();
            // Round digits are allowed their little excess over straight ones.
            const double excess = 0.03 * room.height();
            EXPECT_TRUE(QRectF(room).adjusted(-0.1, -excess, 0.1, excess).contains(bounds)) << figure;
        }
    }
}

TEST(SquareFace, TwoDigitsAreAtLeastTwoFifthsOfTheHeight) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const QRect room = SquareFace::layout(figureOverBars("42"), side).figure;

        EXPECT_GE(SquareFace::figurePath("42", room).boundingRect().height(), 0.4 * side);
    }
}

TEST(SquareFace, FeetAndHeadsOfDigitsAreSharp) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const QRect room = SquareFace::layout(figureOverBars("1"), side).figure;
        const QRectF bounds = SquareFace::figurePath("1", room).boundingRect();

        EXPECT_NEAR(bounds.bottom(), std::round(bounds.bottom()), 0.01);
        EXPECT_NEAR(bounds.top(), std::round(bounds.top()), 0.01);
    }
}

TEST(SquareFace, SmallBarsHaveNoBlurredEdges) {
    for (const int side : smallSizes) {
        SCOPED_TRACE(side);
        const QImage image = drawn({.bars = true, .activeBars = 3}, side);

        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                EXPECT_THAT(test::inkAt(image, x, y), testing::AnyOf(0, 76, 77, 255)) << x << ", " << y;
            }
        }
    }
}

TEST(SquareFace, ActiveBarsAreFullAndOthersFaint) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        const QImage image = drawn({.bars = true, .activeBars = 3}, side);
        const std::vector<QRect> bars = SquareFace::layout({.bars = true}, side).bars;

        EXPECT_EQ(test::inkAt(image, bars[2].center().x(), bars[2].center().y()), 255);
        EXPECT_NEAR(test::inkAt(image, bars[3].center().x(), bars[3].center().y()), 77, 1);
    }
}

TEST(SquareFace, AFigureHasStrokesOfFullInk) {
    for (const int side : sizes) {
        SCOPED_TRACE(side);
        for (const char* figure : figures) {
            const Content content = figureOverBars(figure);
            const QImage image = drawn(content, side);
            const QRect room = SquareFace::layout(content, side).figure;
            int strongest = 0;
            for (int y = room.top(); y <= room.bottom(); ++y) {
                for (int x = room.left(); x <= room.right(); ++x) {
                    strongest = std::max(strongest, test::inkAt(image, x, y));
                }
            }
            EXPECT_GT(strongest, 230) << figure;
        }
    }
}

} // namespace tarnwick
