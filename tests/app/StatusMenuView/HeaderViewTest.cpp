// What the header's colors say.
#include "app/StatusMenuView/HeaderView.h"

#include "app/StatusMenuView/TextTip.h"
#include "tests/app/StatusMenuView/DrawnView.h"

#include <QApplication>
#include <QHelpEvent>

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
    EXPECT_FALSE(hasAtRight(content, colors.warnText()));
}

TEST_F(HeaderViewTest, TheLossWarnsWhenThereIsSome) {
    content.latency.clear();
    EXPECT_FALSE(hasAtRight(content, colors.warnText()));

    content.isLossy = true;
    EXPECT_TRUE(hasAtRight(content, colors.warnText()));
    EXPECT_FALSE(hasAtRight(content, colors.bad()));
}

namespace {

/// In a window, with the pointer at rest on it.
class HeaderTip : public testing::Test {
protected:
    HeaderTip() {
        view.setGeometry(14, 8, 292, view.sizeHint().height());
        window.resize(320, 400);
        window.show();
    }

    void restOnIt() {
        QHelpEvent event(QEvent::ToolTip, QPoint(60, 20), view.mapToGlobal(QPoint(60, 20)));
        QApplication::sendEvent(&view, &event);
    }

    [[nodiscard]] const TextTip* tip() const {
        for (const QObject* const child : window.children()) {
            if (const auto* const found = dynamic_cast<const TextTip*>(child)) {
                return found;
            }
        }
        return nullptr;
    }

    QString longHost = QString(60, u'a') + ".example.org";
    QWidget window;
    HeaderView& view = *new HeaderView(&window); // NOLINT(cppcoreguidelines-owning-memory): the window's
};

} // namespace

TEST_F(HeaderTip, ShowsAllOfAHostNameThatHasNoRoom) {
    view.setContent({.quality = "Fair", .hostLine = longHost, .latency = "550 ms"});
    restOnIt();

    ASSERT_NE(tip(), nullptr);
    EXPECT_EQ(tip()->text(), longHost);
    EXPECT_TRUE(tip()->isVisible());
    EXPECT_TRUE(window.rect().contains(tip()->geometry()));
    EXPECT_GT(tip()->y(), view.geometry().bottom());
}

TEST_F(HeaderTip, IsNotShownForTextsThatHaveRoom) {
    view.setContent({.quality = "Fair", .hostLine = "example.org", .latency = "550 ms"});
    restOnIt();

    EXPECT_EQ(tip(), nullptr);
}

TEST_F(HeaderTip, GoesWithThePointerAndWithANewText) {
    view.setContent({.quality = "Fair", .hostLine = longHost, .latency = "550 ms"});
    restOnIt();
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&view, &leave);
    EXPECT_EQ(tip(), nullptr);

    restOnIt();
    view.setContent({.quality = "Fair", .hostLine = "example.org", .latency = "550 ms"});
    EXPECT_EQ(tip(), nullptr);
}

} // namespace tarnwick
