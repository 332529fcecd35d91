#include "platform/qt/ScreenPixels.h"

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
int scaled(int coordinate, double scale) {
    using Limits = std::numeric_limits<int>;
    const double value = std::round(coordinate * scale);
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

bool isWithin(double reach, ScreenPoint one, ScreenPoint other) {
    // In floating point, where the difference of two far points has room.
    const double across = std::abs(static_cast<double>(one.x) - other.x);
    const double down = std::abs(static_cast<double>(one.y) - other.y);
    return std::max(across, down) <= reach;
}

/// On Wayland panels and compositors count in the units that the toolkit has too.
double pixelsPerUnit(const QScreen& screen) {
    const bool isOnWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return isOnWayland ? 1 : screen.devicePixelRatio();
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
    const bool isX11 = QGuiApplication::platformName() == QLatin1String("xcb");
    return isX11 ? std::optional(of(QCursor::pos())) : std::nullopt;
}

ScreenPoint clicked(ScreenPoint told, ScreenPoint pointer) {
    constexpr std::array scales{1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};
    constexpr int reach = 48; // in units of the panel: some tell the icon's middle or corner
    for (const double scale : scales) {
        const ScreenPoint pixel{.x = scaled(told.x, scale), .y = scaled(told.y, scale)};
        if (isWithin(reach * scale, pixel, pointer)) {
            return pixel;
        }
    }
    return told;
}

} // namespace tarnwick::ScreenPixels
