// Sizes, fonts and colors that views share.
#pragma once

#include "app/ViewStyle/LatencyPalette.h"

#include <QFont>

class QWidget;

namespace tarnwick {

/// All lengths are in device-independent pixels. They grow with the user's font, so that what fits at its
/// usual size fits at any.
class ViewStyle {
public:
    // Sizes of the design, in points.
    static constexpr double usualText = 13;
    static constexpr double smallText = 11; ///< captions and remarks
    static constexpr double headingText = 15;
    static constexpr double windowMargin = 20;

    explicit ViewStyle(const QWidget& widget);

    /// A length of the design, for the font at hand.
    [[nodiscard]] int length(double points) const;

    /// The font for a text that has this many points in the design.
    [[nodiscard]] QFont font(double points, QFont::Weight weight = QFont::Normal) const;

    [[nodiscard]] const LatencyPalette& colors() const { return colors_; }

private:
    QFont base_;
    double factor_; ///< not below 1
    LatencyPalette colors_;
};

} // namespace tarnwick
