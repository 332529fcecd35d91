#include "platform/qt/ScreenOverlay.h"

#include "platform/qt/Foreground.h"
#include "platform/qt/WindowSystem.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

/// The toolkit wants one that is not const. Null when it has gone.
QScreen* ofToolkit(const QScreen* screen) {
    const QList<QScreen*> all = QGuiApplication::screens();
    const auto found = std::ranges::find(all, screen);
    return found != all.end() ? *found : nullptr;
}

wl_output* outputOf(const QScreen* screen) {
    QScreen* const found = ofToolkit(screen);
    return found != nullptr
               ? static_cast<wl_output*>(
                     QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", found))
               : nullptr;
}

} // namespace

bool ScreenOverlay::isNeeded() {
    return WindowSystem::isWayland();
}

void ScreenOverlay::prepare() {
    // The toolkit then makes a surface without a role for a window with the hint.
    qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
}

std::unique_ptr<Wayland::LayerShell> ScreenOverlay::findShell() {
    wl_display* const display = WindowSystem::waylandDisplay();
    return display != nullptr ? Wayland::LayerShell::find(*display) : nullptr;
}

Qt::WindowFlags ScreenOverlay::flags(const Wayland::LayerShell* shell) {
    const Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint;
    return shell != nullptr ? flags | Qt::BypassWindowManagerHint : flags;
}

ScreenOverlay::ScreenOverlay(Needs needs) : needs_(std::move(needs)) {
    if (needs_.shell != nullptr) {
        giveRole();
    } else {
        if (QScreen* const expected = ofToolkit(needs_.screen)) {
            needs_.window.setScreen(expected); // until the compositor tells where the window is
        }
        needs_.window.setWindowState(Qt::WindowMaximized);
        Foreground::show(needs_.window);
    }
}

ScreenOverlay::~ScreenOverlay() = default;

void ScreenOverlay::giveRole() {
    needs_.window.winId(); // makes its surface
    auto* const surface =
        static_cast<wl_surface*>(QGuiApplication::platformNativeInterface()->nativeResourceForWindow(
            "surface", needs_.window.windowHandle()));
    if (surface == nullptr) {
        return;
    }
    surface_.emplace(Wayland::LayerSurface::Needs{
        .shell = *needs_.shell,
        .surface = *surface,
        .screen = outputOf(needs_.screen),
        .cover = needs_.cover,
        .onSize = [this](int width, int height) { show({width, height}); },
        .onClosed = [this] { needs_.onClosed(); }});
}

void ScreenOverlay::show(QSize size) {
    needs_.window.setFixedSize(size);
    // The token would let this window come to the front, where it is anyway.
    qunsetenv("XDG_ACTIVATION_TOKEN");
    needs_.window.show();
}

} // namespace tarnwick
