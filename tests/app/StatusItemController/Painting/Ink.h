// How much of a pixel is covered.
#pragma once

#include "platform/ports/FacePainter.h"

#include <QImage>

namespace tarnwick::test {

/// 0 to 255.
inline int inkAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

/// Covered pixels of a column, fractions included.
inline double inkOfColumn(const QImage& image, int x) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        sum += inkAt(image, x, y) / 255.0;
    }
    return sum;
}

/// Covered pixels of a rectangle, fractions included.
inline double inkOf(const QImage& image, const QRect& rect) {
    double sum = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            sum += inkAt(image, x, y) / 255.0;
        }
    }
    return sum;
}

inline QImage toImage(const Pixmap& pixmap) {
    QImage image(pixmap.width, pixmap.height, QImage::Format_ARGB32);
    for (int y = 0; y < pixmap.height; ++y) {
        for (int x = 0; x < pixmap.width; ++x) {
            image.setPixel(x, y, pixmap.pixels[static_cast<std::size_t>(y * pixmap.width + x)]);
        }
    }
    return image;
}

} // namespace tarnwick::test
