// What the header's colors say.
#include "app/StatusMenuView/HeaderView.h"

#include "tests/app/StatusMenuView/DrawnView.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class HeaderViewTest : public testing::Test {
protected:
    HeaderViewTest() {
        view.setPalette(test::paperPalette());
        view.resize(292, view.sizeHint().height());
    }

    /// Whether the color is seen at the left, where the bars are, or at the right, where latency and loss
    /// are.
    [[nodiscard]] bool hasAtLeft(const HeaderContent& shown, const QColor& color) {
        return has(shown, {0, 0, 22, view.height()}, color);
    }

    [[nodiscard]] bool hasAtRight(const HeaderContent& shown, const QColor& color) {
        return has(shown, {view.width() - 80, 0, 80, view.height()}, color);
    }

    HeaderView view{nullptr};
    LatencyPalette colors{test::paperPalette()};
    HeaderContent content{
        .bars = 3, .quality = "Fair", .hostLine = "example.org", .latency = "550 ms", .loss = "3% loss"};

private:
    bool has(const HeaderContent& shown, const QRect& rect, const QColor& color) {
        view.setContent(shown);
        return test::hasColor(test::drawn(view), rect, color);
    }
};

struct ToneColor {
    QualityTone tone;
    QColor (LatencyPalette::*color)() const;
};

class HeaderTone : public HeaderViewTest, public testing::WithParamInterface<ToneColor> {};

} // namespace

TEST_P(HeaderTone, ColorsTheLitBars) {
    content.tone = GetParam().tone;

    for (const auto color : {&LatencyPalette::good, &LatencyPalette::warn, &LatencyPalette::bad}) {
        EXPECT_EQ(hasAtLeft(content, (colors.*color)()), color == GetParam().color);
    }
    content.bars = 0;
    EXPECT_FALSE(hasAtLeft(content, (colors.*GetParam().color)()));
}

INSTANTIATE_TEST_SUITE_P(
    HeaderViewTest, HeaderTone,
    testing::Values(
        ToneColor{QualityTone::good, &LatencyPalette::good},
        ToneColor{QualityTone::middle, &LatencyPalette::warn},
        ToneColor{QualityTone::bad, &LatencyPalette::bad}));

TEST_F(HeaderViewTest, TheLatencyIsBadWhileDown) {
    content.loss.clear();
    EXPECT_FALSE(hasAtRight(content, colors.bad()));

    content.isDown = true;
    EXPECT_TRUE(hasAtRight(content, colors.bad()));
    EXPECT_FALSE(hasAtRight(content, colors.warn()));
}

TEST_F(HeaderViewTest, TheLossWarnsWhenThereIsSome) {
    content.latency.clear();
    EXPECT_FALSE(hasAtRight(content, colors.warn()));

    content.isLossy = true;
    EXPECT_TRUE(hasAtRight(content, colors.warn()));
    EXPECT_FALSE(hasAtRight(content, colors.bad()));
}

} // namespace tarnwick
