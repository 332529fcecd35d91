// The drop-down where the screen is low for the font.
#include "app/StatusMenuView/LatencyChartView.h"
#include "app/ViewStyle/ViewStyle.h"
#include "tests/app/StatusMenuView/DropDownTest.h"

#include <QScreen>
#include <QWheelEvent>

#include <algorithm>
#include <stdexcept>

namespace tarnwick {

namespace {

/// The program's font, which comes back at the end of a test.
struct UsualFont {
    UsualFont() = default;
    UsualFont(const UsualFont&) = delete;
    UsualFont& operator=(const UsualFont&) = delete;

    ~UsualFont() { QApplication::setFont(usual); }

    QFont usual = QApplication::font();
};

class LowScreenTest : public DropDownTest {
protected:
    LowScreenTest() : low_(*screenNamed("low")) {}

    /// On a screen of 640 x 480, with the font grown by this factor.
    void openWithFont(double factor) { openOn(low_, factor); }

    void openOn(const QScreen& wanted, double factor) {
        QFont font = font_.usual;
        font.setPixelSize(static_cast<int>(13.34 * factor));
        QApplication::setFont(font);
        dropDown.open(ScreenPoint{.x = wanted.geometry().center().x(), .y = wanted.geometry().y() + 4});
        QApplication::processEvents();
    }

    [[nodiscard]] bool fitsScreen() const {
        const QRect panel = dropDown.window()->geometry().adjusted(14, 14, -14, -14);
        return low_.geometry().contains(panel);
    }

    /// Whether all of a row is drawn.
    [[nodiscard]] static bool isSeen(const MenuRow& row) {
        return row.visibleRegion() == QRegion(row.rect());
    }

    [[nodiscard]] const LatencyChartView& chart() const {
        for (const QWidget* const widget : dropDown.window()->findChildren<QWidget*>()) {
            if (const auto* const found = dynamic_cast<const LatencyChartView*>(widget)) {
                return *found;
            }
        }
        throw std::logic_error("no chart");
    }

    static QScreen* screenNamed(const QString& name) {
        const QList<QScreen*> screens = QGuiApplication::screens();
        return *std::ranges::find(screens, name, &QScreen::name);
    }

private:
    QScreen& low_;
    UsualFont font_;
};

} // namespace

TEST_F(LowScreenTest, OnAHigherOneNothingGivesWay) {
    openOn(*screenNamed("high"), 1);

    EXPECT_EQ(chart().chartHeight(), 64);
    EXPECT_TRUE(isSeen(*rows().back()));
}

TEST_F(LowScreenTest, InTheUsualFontTheChartGivesWayByLessThanTwoRows) {
    openWithFont(1);

    EXPECT_GT(chart().chartHeight(), 64 - 2 * rows().back()->height());
    EXPECT_TRUE(fitsScreen());
    EXPECT_TRUE(isSeen(*rows().back()));
}

TEST_F(LowScreenTest, TheChartGivesWayFirst) {
    openWithFont(1.3);

    EXPECT_LT(chart().chartHeight(), 80);
    EXPECT_GE(chart().chartHeight(), 24);
    EXPECT_TRUE(fitsScreen());
    EXPECT_TRUE(isSeen(*rows().front()));
    EXPECT_TRUE(isSeen(*rows().back()));
}

TEST_F(LowScreenTest, ThenTheAirBetweenTheParts) {
    openWithFont(1.33);

    EXPECT_TRUE(fitsScreen());
    EXPECT_TRUE(isSeen(*rows().front()));
    EXPECT_TRUE(isSeen(*rows().back()));
}

TEST_F(LowScreenTest, ThenItScrollsToWhatIsHighlighted) {
    openWithFont(2);
    EXPECT_TRUE(fitsScreen());
    EXPECT_FALSE(isSeen(*rows().back()));

    press(Qt::Key_End);
    EXPECT_TRUE(isSeen(*rows().back()));

    press(Qt::Key_Home);
    EXPECT_FALSE(isSeen(*rows().back()));
    EXPECT_EQ(chart().visibleRegion(), QRegion(chart().rect()));
}

TEST_F(LowScreenTest, AWheelScrolls) {
    openWithFont(2);
    const QPointF middle = QRectF(dropDown.window()->rect()).center();
    for (int notch = 0; notch < 20; ++notch) {
        QWheelEvent down(
            middle, dropDown.window()->mapToGlobal(middle), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
            Qt::NoScrollPhase, false);
        QApplication::sendEvent(dropDown.window(), &down);
    }

    EXPECT_TRUE(isSeen(*rows().back()));
}

} // namespace tarnwick
