#include "platform/qt/Appearance.h"

#include <QApplication>
#include <QPalette>

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
    .window = 0xFFF3F3F4,
    .base = 0xFFFFFFFF,
    .button = 0xFFECECEE,
    .text = 0xFF1B1B1D,
    .disabledText = 0xFF9A9A9E,
    .highlight = 0xFF2F6FD0,
    .link = 0xFF1D5FC4};

constexpr Colors dark{
    .window = 0xFF2A2A2D,
    .base = 0xFF202022,
    .button = 0xFF3B3B3F,
    .text = 0xFFF1F1F3,
    .disabledText = 0xFF7E7E84,
    .highlight = 0xFF3C78D8,
    .link = 0xFF7FB0FF};

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
    return palette;
}

} // namespace

bool isDark() {
    constexpr int middle = 128;
    return QGuiApplication::palette().window().color().lightness() < middle;
}

void prefer(std::optional<bool> wantsDark) {
    const bool hasOurColors = QCoreApplication::testAttribute(Qt::AA_SetPalette);
    if (hasOurColors && wantsDark == isDark()) {
        return;
    }
    // Gives the toolkit its own colors back, for the comparison.
    QApplication::setPalette(QPalette());
    if (wantsDark && *wantsDark != isDark()) {
        QApplication::setPalette(paletteOf(*wantsDark ? dark : light));
    }
}

} // namespace tarnwick::Appearance
