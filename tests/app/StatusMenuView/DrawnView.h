// Views as they are drawn on white, for tests that look at their pixels.
#pragma once

#include "app/ViewStyle/LatencyPalette.h"

#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include <cstdlib>

namespace tarnwick::test {

/// Black on white.
inline QPalette paperPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    return palette;
}

inline QImage blankImage(QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    return image;
}

inline QImage drawn(QWidget& view) {
    QImage image = blankImage(view.size());
    view.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

/// Whether any pixel of the rectangle is about this color; edges are blended with the ground.
inline bool hasColor(const QImage& image, const QRect& rect, const QColor& color) {
    constexpr int tolerance = 25;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - color.red()) <= tolerance
                && std::abs(pixel.green() - color.green()) <= tolerance
                && std::abs(pixel.blue() - color.blue()) <= tolerance) {
                return true;
            }
        }
    }
    return false;
}

} // namespace tarnwick::test
