// The messages of the Wayland protocol wlr-layer-shell-unstable-v1, version 1, as libwayland wants them told.
#pragma once

#include <wayland-client-core.h>

#include <cstdint>

namespace tarnwick::Wayland::LayerShellMessages {

/// The interfaces, for `wl_registry_bind` and for new objects.
extern const wl_interface shell;
extern const wl_interface surface;

enum ShellRequest : std::uint32_t { getLayerSurface = 0 };

/// Those of a surface that this program sends.
enum SurfaceRequest : std::uint32_t {
    setSize = 0,
    setAnchor = 1,
    setExclusiveZone = 2,
    setKeyboardInteractivity = 4,
    ackConfigure = 6,
    destroy = 7,
};

enum Layer : std::uint32_t { topLayer = 2, overlayLayer = 3 };

enum Anchor : std::uint32_t { allEdges = 15 };

constexpr std::int32_t coveringPanels = -1; ///< as an exclusive zone

enum KeyboardInteractivity : std::uint32_t { exclusive = 1 };

/// In the order of the protocol.
struct SurfaceListener {
    void (*configure)(
        void* self, wl_proxy* surface, std::uint32_t serial, std::uint32_t width, std::uint32_t height);
    void (*closed)(void* self, wl_proxy* surface);
};

} // namespace tarnwick::Wayland::LayerShellMessages
