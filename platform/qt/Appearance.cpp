#include "platform/qt/Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

#include <cstdlib>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformtheme.h>

namespace tarnwick::Appearance {

namespace {

struct Colors {
    QRgb window;
    QRgb base; ///< behind what can be edited or selected
    QRgb button;
    QRgb text;
    QRgb disabledText;
    QRgb highlight;
    QRgb link;
};

constexpr Colors light{
    .window = 0xFFFAFAFA,
    .base = 0xFFFFFFFF,
    .button = 0xFFF0F0F1,
    .text = 0xFF1D1F23,
    .disabledText = 0xFF9A9DA3,
    .highlight = 0xFF2A6FDB,
    .link = 0xFF1D5FC4};

constexpr Colors dark{
    .window = 0xFF282A30,
    .base = 0xFF1E2025,
    .button = 0xFF383B43,
    .text = 0xFFF1F2F4,
    .disabledText = 0xFF7C8088,
    .highlight = 0xFF2F6DD6,
    .link = 0xFF7FB0FF};

constexpr Colors blackOnWhite{
    .window = 0xFFFFFFFF,
    .base = 0xFFFFFFFF,
    .button = 0xFFFFFFFF,
    .text = 0xFF000000,
    .disabledText = 0xFF595959,
    .highlight = 0xFF0B47A1,
    .link = 0xFF0B47A1};

constexpr Colors whiteOnBlack{
    .window = 0xFF000000,
    .base = 0xFF000000,
    .button = 0xFF000000,
    .text = 0xFFFFFFFF,
    .disabledText = 0xFFA6A6A6,
    .highlight = 0xFF1F5FBF,
    .link = 0xFF9CC4FF};

/// No view draws with this role. Left to the toolkit, it makes the toolkit tell when its own colors change.
QPalette withToolkitsMidlight(const QPalette& palette) {
    QPalette result;
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        const auto each = static_cast<QPalette::ColorRole>(role);
        if (each != QPalette::Midlight && each != QPalette::NoRole) {
            for (const QPalette::ColorGroup group :
                 {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
                result.setBrush(group, each, palette.brush(group, each));
            }
        }
    }
    return result;
}

QPalette paletteOf(const Colors& colors) {
    // From the button's color the toolkit derives those of edges and shadows.
    QPalette palette{QColor(colors.button), QColor(colors.window)};
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, colors.text);
        palette.setColor(QPalette::Disabled, role, colors.disabledText);
    }
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::AlternateBase, colors.window);
    palette.setColor(QPalette::ToolTipBase, colors.base);
    palette.setColor(QPalette::PlaceholderText, colors.disabledText);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, colors.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colors.link);
    palette.setColor(QPalette::LinkVisited, colors.link);
    return withToolkitsMidlight(palette);
}

bool isDark(const QPalette& palette) {
    constexpr int middle = 128;
    return palette.window().color().lightness() < middle;
}

/// Also while the application has ours.
QPalette toolkitPalette() {
    if (!QCoreApplication::testAttribute(Qt::AA_SetPalette)) {
        return QApplication::palette();
    }
    const QPlatformTheme* const theme = QGuiApplicationPrivate::platformTheme();
    const QPalette* const palette = theme != nullptr ? theme->palette() : nullptr;
    return palette != nullptr ? *palette : QApplication::style()->standardPalette();
}

const Colors& colorsFor(bool wantsDark, bool wantsContrast) {
    if (wantsContrast) {
        return wantsDark ? whiteOnBlack : blackOnWhite;
    }
    return wantsDark ? dark : light;
}

} // namespace

bool isBlackAndWhite(const QPalette& palette) {
    constexpr int almostAll = 250; // of 255; usual palettes stay below
    const int text = palette.color(QPalette::WindowText).lightness();
    return std::abs(text - palette.color(QPalette::Window).lightness()) > almostAll;
}

bool isDark() {
    return isDark(QGuiApplication::palette());
}

void prefer(std::optional<bool> wantsDark, bool wantsContrast) {
    const QPalette toolkit = toolkitPalette();
    const bool becomesDark = wantsDark.value_or(isDark(toolkit));
    const bool hasOurs = QCoreApplication::testAttribute(Qt::AA_SetPalette);
    if (isBlackAndWhite(toolkit) && isDark(toolkit) == becomesDark) {
        if (hasOurs) {
            QApplication::setPalette(QPalette());
        }
        return;
    }
    const QPalette ours = paletteOf(colorsFor(becomesDark, wantsContrast));
    const QPalette present = QApplication::palette();
    const bool isShown = present.color(QPalette::Window) == ours.color(QPalette::Window)
                         && present.color(QPalette::WindowText) == ours.color(QPalette::WindowText);
    if (!hasOurs || !isShown) {
        QApplication::setPalette(ours);
    }
}

} // namespace tarnwick::Appearance
