#include "platform/qt/TrayStatusItem.h"

#include "platform/qt/FaceIcon.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace tarnwick {

namespace {

/// The toolkit scales what is on a screen, not where the screens are.
ScreenPoint inPixels(const QPoint& point) {
    const QScreen* screen = QGuiApplication::screenAt(point);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    const QPoint origin = screen->geometry().topLeft();
    const QPointF offset = QPointF(point - origin) * screen->devicePixelRatio();
    return {
        .x = origin.x() + static_cast<int>(std::lround(offset.x())),
        .y = origin.y() + static_cast<int>(std::lround(offset.y())),
    };
}

} // namespace

TrayStatusItem::TrayStatusItem(const FacePainter& painter, Ink ink) : painter_(painter), ink_(ink) {
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_, [this] {
        if (onActivate) {
            onActivate(bottomCenter());
        }
    });
    showFace();
    icon_.show();
}

void TrayStatusItem::setFace(const StatusFace& face) {
    face_ = face;
    showFace();
}

void TrayStatusItem::setToolTip(const std::string& text) {
    icon_.setToolTip(QString::fromStdString(text));
}

double TrayStatusItem::textWidth(const std::string& text) const {
    return painter_.textWidth(text);
}

void TrayStatusItem::setInk(Ink ink) {
    ink_ = ink;
    showFace();
}

void TrayStatusItem::showFace() {
    icon_.setIcon(faceIcon(face_, painter_, ink_));
}

std::optional<ScreenPoint> TrayStatusItem::bottomCenter() const {
    const QRect place = icon_.geometry();
    return inPixels(place.isValid() ? QPoint(place.center().x(), place.bottom()) : QCursor::pos());
}

} // namespace tarnwick
