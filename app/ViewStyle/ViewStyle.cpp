#include "app/ViewStyle/ViewStyle.h"

#include <QFontInfo>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

/// Height in pixels of the usual desktop font, ten points at 96 dots an inch.
constexpr double usualPixels = 10 * 96 / 72.0;

} // namespace

ViewStyle::ViewStyle(const QWidget& widget)
    : base_(widget.font()),
      factor_(std::max(1.0, QFontInfo(base_).pixelSize() / usualPixels)),
      colors_(widget.palette()) {
}

int ViewStyle::length(double points) const {
    return static_cast<int>(std::lround(points * factor_));
}

QFont ViewStyle::font(double points, QFont::Weight weight) const {
    QFont font = base_;
    const double share = points / usualText;
    if (base_.pixelSize() > 0) {
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(base_.pixelSize() * share))));
    } else {
        font.setPointSizeF(base_.pointSizeF() * share);
    }
    font.setWeight(weight);
    return font;
}

} // namespace tarnwick
