// The signal bars of the menu view.
#pragma once

#include <QColor>
#include <QRectF>

#include <vector>

class QPainter;

namespace tarnwick::SignalBars {

/// The bars from left to right, inside `frame`. `levels` is at least 1.
[[nodiscard]] std::vector<QRectF> geometry(const QRectF& frame, int levels);

/// `active` of them in `color`, the others in a faint `unlit`.
void draw(
    QPainter& painter, const QRectF& frame, int levels, int active, const QColor& color, const QColor& unlit);

} // namespace tarnwick::SignalBars
