#include "platform/qt/Appearance.h"

#include <QApplication>
#include <QPalette>

namespace tarnwick::Appearance {

namespace {

struct Colors {
    QColor window;
    QColor base; ///< behind what can be edited or selected
    QColor button;
    QColor text;
    QColor disabledText;
    QColor highlight;
    QColor link;
};

const Colors light{
    .window = QColor(0xF3F3F4),
    .base = QColor(0xFFFFFF),
    .button = QColor(0xECECEE),
    .text = QColor(0x1B1B1D),
    .disabledText = QColor(0x9A9A9E),
    .highlight = QColor(0x2F6FD0),
    .link = QColor(0x1D5FC4)};

const Colors dark{
    .window = QColor(0x2A2A2D),
    .base = QColor(0x202022),
    .button = QColor(0x3B3B3F),
    .text = QColor(0xF1F1F3),
    .disabledText = QColor(0x7E7E84),
    .highlight = QColor(0x3C78D8),
    .link = QColor(0x7FB0FF)};

QPalette paletteOf(const Colors& colors) {
    // From the button's color the toolkit derives those of edges and shadows.
    QPalette palette(colors.button, colors.window);
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
    // Without colors of ours, its own are there again.
    QApplication::setPalette(QPalette());
    if (wantsDark && *wantsDark != isDark()) {
        QApplication::setPalette(paletteOf(*wantsDark ? dark : light));
    }
}

} // namespace tarnwick::Appearance
