#include "platform/qt/ScreenPixels.h"

#include "platform/qt/WindowSystem.h"
#include "platform/x11/Docks.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tarnwick::ScreenPixels {

namespace {

/// A panel may tell any number as the place of a click: one that no `int` holds becomes the nearest.
int scaled(int coordinate, double scale, int origin) {
    using Limits = std::numeric_limits<int>;
    const double value = std::round((static_cast<double>(coordinate) - origin) * scale) + origin;
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

ScreenPoint scaled(ScreenPoint point, double scale, ScreenPoint origin) {
    return {.x = scaled(point.x, scale, origin.x), .y = scaled(point.y, scale, origin.y)};
}

bool isWithin(double reach, ScreenPoint one, ScreenPoint other) {
    // In floating point, where the difference of two far points has room.
    const double across = std::abs(static_cast<double>(one.x) - other.x);
    const double down = std::abs(static_cast<double>(one.y) - other.y);
    return std::max(across, down) <= reach;
}

/// On Wayland panels and compositors count in the units that the toolkit has too.
double pixelsPerUnit(const QScreen& screen) {
    return WindowSystem::isWayland() ? 1 : screen.devicePixelRatio();
}

/// The units of a screen that lie wholly in these pixels.
QRect unitsInside(const X11::Area& pixels, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    const double ratio = pixelsPerUnit(screen);
    const QRectF inside(
        (pixels.x - origin.x()) / ratio, (pixels.y - origin.y()) / ratio, pixels.width / ratio,
        pixels.height / ratio);
    const QPointF topLeft(std::ceil(inside.left()), std::ceil(inside.top()));
    const QPointF end(std::floor(inside.right()), std::floor(inside.bottom()));
    return {origin + topLeft.toPoint(), origin + end.toPoint() - QPoint(1, 1)};
}

} // namespace

ScreenPoint of(const QPoint& point) {
    const QScreen* screen = QGuiApplication::screenAt(point);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    // The toolkit scales what is on a screen, not where the screens are.
    const QPoint origin = screen->geometry().topLeft();
    const QPointF offset = QPointF(point - origin) * pixelsPerUnit(*screen);
    return {
        .x = origin.x() + static_cast<int>(std::lround(offset.x())),
        .y = origin.y() + static_cast<int>(std::lround(offset.y())),
    };
}

std::pair<QScreen*, QPoint> locate(ScreenPoint pixel) {
    for (QScreen* screen : QGuiApplication::screens()) {
        const QRect area = screen->geometry();
        const double ratio = pixelsPerUnit(*screen);
        const QRectF inPixels(area.topLeft(), QSizeF(area.size()) * ratio);
        if (inPixels.contains(QPointF(pixel.x, pixel.y))) {
            const QPointF inside = (QPointF(pixel.x, pixel.y) - area.topLeft()) / ratio;
            return {screen, area.topLeft() + inside.toPoint()};
        }
    }
    return {nullptr, {}};
}

std::optional<ScreenPoint> pointer() {
    return WindowSystem::isX11() ? std::optional(of(QCursor::pos())) : std::nullopt;
}

ScreenPoint clicked(ScreenPoint told, ScreenPoint pointer, ScreenPoint origin) {
    constexpr std::array scales{1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};
    constexpr int reach = 48; // in units of the panel: some tell the icon's middle or corner
    for (const ScreenPoint from : {origin, ScreenPoint{}}) {
        for (const double scale : scales) {
            const ScreenPoint pixel = scaled(told, scale, from);
            if (isWithin(reach * scale, pixel, pointer)) {
                return pixel;
            }
        }
    }
    return told;
}

QRect available(const QScreen& screen) {
    const QRect told = screen.availableGeometry();
    if (!WindowSystem::isX11()) {
        return told;
    }
    // With several monitors the toolkit tells all of each.
    const QRect area = screen.geometry();
    const QSizeF pixels = QSizeF(area.size()) * pixelsPerUnit(screen);
    const X11::Area left = X11::findDocks().freeOf(
        {.x = area.x(),
         .y = area.y(),
         .width = static_cast<int>(std::lround(pixels.width())),
         .height = static_cast<int>(std::lround(pixels.height()))});
    return told & unitsInside(left, screen);
}

} // namespace tarnwick::ScreenPixels
