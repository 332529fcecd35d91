#include "app/StatusItemController/Painting/MenuBarIcon.h"

#include <QPainter>

#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

namespace tarnwick {

namespace {

constexpr QSizeF triangleSize{16, MenuBarIcon::height};

/// A closed triangle whose corners are rounded off from `cut` points before each of them.
void addTriangle(QPainterPath& path, const std::array<QPointF, 3>& corners, double cut) {
    const auto stepToward = [cut](QPointF from, QPointF to) {
        const QPointF way = to - from;
        return from + way * (cut / std::hypot(way.x(), way.y()));
    };
    path.moveTo(stepToward(corners[0], corners[2]));
    for (std::size_t index = 0; index < corners.size(); ++index) {
        const QPointF corner = corners[index];
        const QPointF next = corners[(index + 1) % corners.size()];
        path.quadTo(corner, stepToward(corner, next));
        path.lineTo(stepToward(next, corner));
    }
    path.closeSubpath();
}

QPainterPath makeTrianglePath() {
    QPainterPath path; // odd-even fill: a shape inside another one is a hole in it
    addTriangle(path, {QPointF{8, -0.9}, {16.4, 14}, {-0.4, 14}}, 2);
    addTriangle(path, {QPointF{8, 2.15}, {13.83, 12.5}, {2.17, 12.5}}, 0.7);
    path.addRoundedRect(QRectF(7, 4.7, 2, 4.3), 0.8, 0.8);
    path.addRoundedRect(QRectF(7, 9.8, 2, 1.9), 0.8, 0.8);
    return path;
}

/// No bars at all are a programming error, which ends the program.
void requireBars(int levelCount) {
    if (levelCount < 1) {
        std::abort();
    }
}

} // namespace

TemplateImage::TemplateImage(QSizeF size, QString accessibleDescription, Draw draw)
    : size_(size), accessibleDescription_(std::move(accessibleDescription)), draw_(std::move(draw)) {
}

QImage TemplateImage::image(double scale) const {
    // An excess this small is a rounding error, and needs no further pixel.
    const auto pixels = [scale](double points) {
        return static_cast<int>(std::ceil(points * scale - 0.001));
    };
    QImage image(pixels(size_.width()), pixels(size_.height()), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter, scale);
    return image;
}

namespace MenuBarIcon {

std::vector<Bar> barGeometry(int active, int levelCount) {
    requireBars(levelCount);
    std::vector<Bar> bars;
    for (int index = 0; index < levelCount; ++index) {
        const double share = levelCount > 1 ? static_cast<double>(index) / (levelCount - 1) : 1;
        const double barHeight = (height - smallestBar) * share + smallestBar;
        bars.push_back(
            {.rect = {index * (barWidth + barGap), height - barHeight, barWidth, barHeight},
             .opacity = index < active ? activeOpacity : inactiveOpacity});
    }
    return bars;
}

std::vector<Bar> barPixels(int active, int levelCount, double scale) {
    std::vector<Bar> bars = barGeometry(active, levelCount);
    const double foot = std::round(height * scale);
    const double width = std::max(1.0, std::round(barWidth * scale));
    for (Bar& bar : bars) {
        const double barHeight = bar.rect.height() * scale;
        bar.rect = {std::round(bar.rect.left() * scale), foot - barHeight, width, barHeight};
    }
    return bars;
}

double cornerRadiusPixels(double scale) {
    return cornerRadius * scale;
}

void drawBars(QPainter& painter, const std::vector<Bar>& bars, double radius) {
    painter.setPen(Qt::NoPen);
    for (const Bar& bar : bars) {
        painter.setBrush(QColor::fromRgbF(0, 0, 0, static_cast<float>(bar.opacity)));
        painter.drawRoundedRect(bar.rect, radius, radius);
    }
}

const QPainterPath& trianglePath() {
    static const QPainterPath path = makeTrianglePath();
    return path;
}

TemplateImagePtr bars(int active, int levelCount) {
    requireBars(levelCount);
    static std::map<std::pair<int, int>, TemplateImagePtr> cache;
    TemplateImagePtr& image = cache[{active, levelCount}];
    if (!image) {
        const double width = levelCount * barWidth + (levelCount - 1) * barGap;
        image = std::make_shared<TemplateImage>(
            QSizeF(width, height), QStringLiteral("Connection quality %1 of %2").arg(active).arg(levelCount),
            [active, levelCount](QPainter& painter, double scale) {
                drawBars(painter, barPixels(active, levelCount, scale), cornerRadiusPixels(scale));
            });
    }
    return image;
}

TemplateImagePtr failed() {
    static const TemplateImagePtr image = std::make_shared<TemplateImage>(
        triangleSize, QStringLiteral("Connection down"), [](QPainter& painter, double scale) {
            painter.save();
            painter.scale(scale, scale);
            painter.fillPath(trianglePath(), Qt::black);
            painter.restore();
        });
    return image;
}

} // namespace MenuBarIcon

} // namespace tarnwick
