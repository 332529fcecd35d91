#include "app/App/ScreenOfUser.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace tarnwick {

namespace {

/// Pixels of the screen that are left for the window's title and frame.
constexpr int titleHeight = 48;
constexpr int frameWidth = 16;

} // namespace

QScreen& screenOfUser() {
    QScreen* const pointed = QGuiApplication::screenAt(QCursor::pos());
    return pointed != nullptr ? *pointed : *QGuiApplication::primaryScreen();
}

QSize spareSize(const QScreen& screen) {
    return screen.availableSize() - QSize(frameWidth, titleHeight);
}

} // namespace tarnwick
