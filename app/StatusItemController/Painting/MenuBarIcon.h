// The signal bars and the warning triangle of the status item: masks, drawn at any scale.
#pragma once

#include "app/Reading/Reading.h"

#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QPainter;

namespace tarnwick {

/// A mask, measured in points: black with opacity, tinted where it is shown.
class TemplateImage {
public:
    /// Draws in device pixels, `scale` of them to a point, from the top left.
    using Draw = std::function<void(QPainter& painter, double scale)>;

    TemplateImage(QSizeF size, QString accessibleDescription, Draw draw);

    [[nodiscard]] QSizeF size() const { return size_; }

    [[nodiscard]] const QString& accessibleDescription() const { return accessibleDescription_; }

    void draw(QPainter& painter, double scale) const { draw_(painter, scale); }

    /// In as many pixels as its size takes at this scale, rounded up.
    [[nodiscard]] QImage image(double scale) const;

private:
    QSizeF size_;
    QString accessibleDescription_;
    Draw draw_;
};

/// Equal pointers are equal pictures.
using TemplateImagePtr = std::shared_ptr<const TemplateImage>;

/// Main thread.
namespace MenuBarIcon {

inline constexpr double height = 14;
/// A panel of this height leaves the right margins around an image of `height`.
inline constexpr double panelHeight = 22;
inline constexpr double barWidth = 3;
inline constexpr double barGap = 1;
inline constexpr double smallestBar = 3;
inline constexpr double cornerRadius = 0.75;
inline constexpr double activeOpacity = 1;
inline constexpr double inactiveOpacity = 0.3;

struct Bar {
    QRectF rect; ///< y grows downward
    double opacity = activeOpacity;

    friend bool operator==(const Bar&, const Bar&) = default;
};

/// The bars from left to right, in points. `levelCount` is at least 1.
[[nodiscard]] std::vector<Bar> barGeometry(int active, int levelCount);
/// The same in device pixels. Sides and feet lie on whole pixels at every scale; tops stay where they are.
[[nodiscard]] std::vector<Bar> barPixels(int active, int levelCount, double scale);
[[nodiscard]] double cornerRadiusPixels(double scale);
void drawBars(QPainter& painter, const std::vector<Bar>& bars, double radius);

/// The outline of a triangle with an exclamation mark, in points, as `failed` shows it.
[[nodiscard]] const QPainterPath& trianglePath();

/// `levelCount` is at least 1. Each picture is made once.
[[nodiscard]] TemplateImagePtr bars(int active, int levelCount = barLevels);
[[nodiscard]] TemplateImagePtr failed();

} // namespace MenuBarIcon

} // namespace tarnwick
