// How well two colors can be told from each other.
#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

namespace tarnwick::test {

/// Contrast of two colors as the accessibility guidelines for web content reckon it, 1 to 21.
inline double contrast(const QColor& first, const QColor& second) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double share) {
            return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
               + 0.0722 * linear(color.blueF());
    };
    const auto [low, high] = std::minmax({luminance(first), luminance(second)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace tarnwick::test
