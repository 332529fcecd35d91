// The colors of the toolkit, as they change while the program runs.
#include "platform/qt/PaletteWatch.h"

#include <QApplication>
#include <QPalette>

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class PaletteWatchTest : public testing::Test {
protected:
    static void useWindowColor(Qt::GlobalColor color) {
        QPalette palette = QApplication::palette();
        palette.setColor(QPalette::Window, color);
        QApplication::setPalette(palette);
        QCoreApplication::processEvents();
    }

    void TearDown() override { QApplication::setPalette(before_); }

private:
    QPalette before_ = QApplication::palette();
};

} // namespace

TEST_F(PaletteWatchTest, TellsOfAChangeWithTheNewColorsInPlace) {
    QColor seen;
    const PaletteWatch watch([&] { seen = QApplication::palette().window().color(); });

    useWindowColor(Qt::darkBlue);

    EXPECT_EQ(seen, QColor(Qt::darkBlue));
}

TEST_F(PaletteWatchTest, TellsNothingAfterItsEnd) {
    int changes = 0;
    {
        const PaletteWatch watch([&] { ++changes; });
    }

    useWindowColor(Qt::darkRed);

    EXPECT_EQ(changes, 0);
}

} // namespace tarnwick
