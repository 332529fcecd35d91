// A window laid over a screen of a Wayland compositor, in which the program chooses its own places.
#pragma once

#include "platform/wayland/LayerShell.h"

#include <QSize>

#include <functional>
#include <memory>
#include <optional>

class QScreen;
class QWidget;

namespace tarnwick {

/// On Wayland a window can't choose its place. A transparent window over the screen does instead: it draws
/// where it likes. Where the compositor has a layer shell, that is a surface of it, else a maximized window.
/// Main thread.
class ScreenOverlay {
public:
    /// Whether windows need it here. Needs a QGuiApplication.
    [[nodiscard]] static bool isNeeded();
    /// Lets `flags` work. To be called before the application is made.
    static void prepare();
    /// The compositor's layer shell. Null on other platforms and where the compositor has none, as on GNOME.
    /// Waits for its answer. Needs a QGuiApplication, and ends before it.
    [[nodiscard]] static std::unique_ptr<Wayland::LayerShell> findShell();

    struct Needs {
        Wayland::LayerShell* shell; ///< may be null
        QWidget& window;            ///< made with `flags`, hidden; shown as soon as it has its size
        const QScreen* screen; ///< null: the compositor chooses; it may put a maximized window on another one
        Wayland::LayerSurface::Cover cover;
        std::function<void()> onClosed; ///< the compositor has taken it away
    };

    explicit ScreenOverlay(Needs needs);
    ScreenOverlay(const ScreenOverlay&) = delete;
    ScreenOverlay& operator=(const ScreenOverlay&) = delete;
    /// The window is to be hidden next.
    ~ScreenOverlay();

    /// What the window is to be made with.
    [[nodiscard]] static Qt::WindowFlags flags(const Wayland::LayerShell* shell);

private:
    void giveRole();
    void show(QSize size);

    Needs needs_;
    std::optional<Wayland::LayerSurface> surface_;
};

} // namespace tarnwick
