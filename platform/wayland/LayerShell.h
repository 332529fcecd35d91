// Surfaces that a Wayland compositor lays over a screen, above windows, for programs that belong to the
// desktop.
#pragma once

#include "platform/wayland/Globals.h"

#include <functional>
#include <memory>
#include <utility>

struct wl_display;
struct wl_output;
struct wl_proxy;
struct wl_surface;

namespace tarnwick::Wayland {

/// The compositor's layer shell.
class LayerShell {
public:
    /// Asks the compositor, and waits for its answer. Null where it has none, as on GNOME.
    [[nodiscard]] static std::unique_ptr<LayerShell> find(wl_display& display);

    [[nodiscard]] wl_proxy* proxy() const { return proxy_.get(); }

private:
    explicit LayerShell(ProxyPtr proxy) : proxy_(std::move(proxy)) {}

    ProxyPtr proxy_;
};

/// A surface over a screen. Its events arrive on the display's default queue.
class LayerSurface {
public:
    enum class Cover {
        /// What panels leave free, or the whole screen where the compositor takes no account of them. The
        /// surface has the keyboard while it is there.
        workArea,
        /// Panels, too. The surface never has the keyboard.
        screen,
    };

    struct Needs {
        LayerShell& shell;
        wl_surface& surface; ///< without a role and without a buffer; outlives the layer surface
        wl_output* screen;   ///< null: the compositor chooses
        Cover cover;
        /// The size in the units of windows. Nothing may be drawn before the first call.
        std::function<void(int width, int height)> onSize;
        /// The compositor has taken it away, for example with its screen.
        std::function<void()> onClosed;
    };

    explicit LayerSurface(Needs needs);
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;
    ~LayerSurface();

private:
    struct Events;

    Needs needs_;
    ProxyPtr proxy_;
};

} // namespace tarnwick::Wayland
