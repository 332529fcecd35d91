#include "app/StatusItemController/Painting/SignalBars.h"

#include <QPainter>

#include <cstdlib>

namespace tarnwick::SignalBars {

namespace {

constexpr double spacing = 2;
constexpr double cornerRadius = 1.5;
constexpr float unlitOpacity = 0.3F;

} // namespace

std::vector<QRectF> geometry(const QRectF& frame, int levels) {
    if (levels < 1) {
        std::abort(); // a programming error
    }
    const double width = (frame.width() - spacing * (levels - 1)) / levels;
    std::vector<QRectF> bars;
    for (int index = 0; index < levels; ++index) {
        const double height = frame.height() * (index + 1) / levels;
        bars.emplace_back(frame.left() + index * (width + spacing), frame.bottom() - height, width, height);
    }
    return bars;
}

void draw(
    QPainter& painter, const QRectF& frame, int levels, int active, const QColor& color,
    const QColor& unlit) {
    QColor faint = unlit;
    faint.setAlphaF(unlit.alphaF() * unlitOpacity);
    painter.setPen(Qt::NoPen);
    int index = 0;
    for (const QRectF& bar : geometry(frame, levels)) {
        painter.setBrush(index < active ? color : faint);
        painter.drawRoundedRect(bar, cornerRadius, cornerRadius);
        ++index;
    }
}

} // namespace tarnwick::SignalBars
