// How the settings form looks, in light and dark.
#include "platform/qt/Appearance.h"
#include "tests/app/SettingsView/SettingsFormTest.h"
#include "tests/support/Contrast.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace tarnwick {

namespace {

class SettingsLooksTest : public test::SettingsFormTest {
protected:
    void TearDown() override { Appearance::prefer(std::nullopt); }

    /// In the color scheme that is preferred.
    [[nodiscard]] QImage picture() {
        present();
        return window.view().grab().toImage();
    }

    /// The picture's color at the middle of the control's left edge, and right outside it.
    struct Edge {
        QColor line;
        QColor ground;
    };

    [[nodiscard]] Edge edge(const QWidget& control, const QImage& image) const {
        const QRect where = place(control);
        const QPoint middle(where.left(), where.center().y());
        const QColor ground = image.pixelColor(middle - QPoint(2, 0));
        // A check box is smaller than its widget in some styles.
        for (int x = 0; x < where.width() / 2; ++x) {
            const QColor color = image.pixelColor(middle + QPoint(x, 0));
            if (test::contrast(color, ground) > 1.2) {
                return {color, ground};
            }
        }
        return {ground, ground};
    }

    /// From the first to the last row of the control that differs from its ground, at its horizontal middle.
    [[nodiscard]] int paintedHeight(const QWidget& control, const QImage& image) const {
        const QRect where = place(control);
        const int x = where.left() + where.width() / 4;
        const QColor ground = image.pixelColor(x, where.top() - 3);
        int first = where.bottom();
        int last = where.top();
        for (int y = where.top() - 2; y <= where.bottom() + 2; ++y) {
            if (image.pixelColor(x, y) != ground) {
                first = std::min(first, y);
                last = std::max(last, y);
            }
        }
        return last - first + 1;
    }

    /// How far inside the control the first dark pixel of its text is.
    [[nodiscard]] int textInset(const QWidget& control, const QImage& image) const {
        const QRect where = place(control).adjusted(3, 6, 0, -6);
        for (int x = where.left(); x < where.center().x(); ++x) {
            for (int y = where.top(); y <= where.bottom(); ++y) {
                if (image.pixelColor(x, y).lightness() < 128) {
                    return x - place(control).left();
                }
            }
        }
        return -1;
    }
};

} // namespace

TEST_F(SettingsLooksTest, ItFollowsTheDesktopFromLightToDark) {
    const auto groundOfCard = [this] {
        return picture().pixelColor(place(label("Display")).topLeft() - QPoint(4, 0)).lightness();
    };
    Appearance::prefer(false);
    const int onLight = groundOfCard();
    Appearance::prefer(true);
    const int onDark = groundOfCard();
    const QColor footer = label("1 to 60 seconds.").palette().color(QPalette::WindowText);

    EXPECT_GT(onLight, 200);
    EXPECT_LT(onDark, 80);
    EXPECT_GT(footer.lightness(), 200);
}

TEST_F(SettingsLooksTest, ControlsStandOutFromTheirCardInLightAndDark) {
    constexpr double enough = 2.5;
    for (const bool isDark : {false, true}) {
        Appearance::prefer(isDark);
        const QImage image = picture();
        interval().setFocus(); // whose edge tells that
        for (QWidget* each : std::initializer_list<QWidget*>{
                 &alerts(), &launchAtLogin(), &display(), &lossText(), &restore()}) {
            const Edge seen = edge(*each, image);
            EXPECT_GE(test::contrast(seen.line, seen.ground), enough) << name(*each) << isDark;
        }
        const QImage withoutHost = picture();
        const Edge ofHost = edge(host(), withoutHost);
        EXPECT_GE(test::contrast(ofHost.line, ofHost.ground), enough) << isDark;
        host().setFocus();
        const Edge ofInterval = edge(interval(), picture());
        EXPECT_GE(test::contrast(ofInterval.line, ofInterval.ground), enough) << isDark;
    }
}

TEST_F(SettingsLooksTest, FieldsAndPickersAreEquallyHigh) {
    useUsualFont();
    const QImage image = picture();

    EXPECT_EQ(paintedHeight(host(), image), 28);
    EXPECT_EQ(paintedHeight(interval(), image), 28);
    EXPECT_EQ(paintedHeight(display(), image), 28);
}

TEST_F(SettingsLooksTest, WhatStandsInARowIsCenteredInIt) {
    useUsualFont();
    present();
    for (const auto& [control, text] : std::initializer_list<std::pair<QWidget*, const char*>>{
             {&host(), "Host to Ping"},
             {&interval(), "Ping Every"},
             {interval().findChild<QLineEdit*>(), "Ping Every"},
             {&display(), "Display"},
             {&alerts(), "Connection Up/Down Alerts"}}) {
        EXPECT_EQ(place(*control).center().y(), place(label(text)).center().y()) << text;
    }
}

TEST_F(SettingsLooksTest, TextsInFieldsBeginEquallyFarInside) {
    useUsualFont();
    prefs.setHostname("Ire.example");
    prefs.setDisplay(Preferences::Display::iconOnly); // both begin with the same letter
    alerts().setFocus();
    const QImage image = picture();

    EXPECT_EQ(textInset(host(), image), textInset(display(), image));
}

TEST_F(SettingsLooksTest, DividersEndEquallyFarInsideAtBothSides) {
    Appearance::prefer(false);
    const QImage image = picture();
    const QWidget& row = *label("Packet Loss Text").parentWidget();
    const QRect where = place(row);
    const auto isLine = [&](int x) {
        return image.pixelColor(x, where.top()).lightness()
               < image.pixelColor(x, where.top() + 3).lightness() - 10;
    };
    int left = where.left() + 2;
    while (left < where.right() && !isLine(left)) {
        ++left;
    }
    int right = where.right() - 2;
    while (right > left && !isLine(right)) {
        --right;
    }
    EXPECT_GT(left - where.left(), 5);
    EXPECT_NEAR(left - where.left(), where.right() - right, 1);
}

TEST_F(SettingsLooksTest, DigitsInTheIntervalsFieldAreEquallyWideInEveryFont) {
    for (const QString& family : QFontDatabase::families()) {
        QFont font = window.view().font();
        font.setFamily(family);
        window.view().setFont(font);
        const QFontMetricsF metrics(interval().findChild<QLineEdit*>()->font());
        for (char16_t digit = u'1'; digit <= u'9'; ++digit) {
            EXPECT_EQ(metrics.horizontalAdvance(digit), metrics.horizontalAdvance(u'0'))
                << family.toStdString();
        }
    }
}

} // namespace tarnwick
