#include "platform/wayland/LayerShell.h"

#include "platform/wayland/LayerShellMessages.h"

#include <wayland-client-protocol.h>

#include <cstdint>
#include <utility>

namespace tarnwick::Wayland {

namespace Messages = LayerShellMessages;

namespace {

std::uint32_t layerFor(LayerSurface::Cover cover) {
    return cover == LayerSurface::Cover::screen ? Messages::overlayLayer : Messages::topLayer;
}

} // namespace

std::unique_ptr<LayerShell> LayerShell::find(wl_display& display) {
    // On a queue of its own: waiting on the display's would hand out the toolkit's events here.
    const QueuePtr queue = newQueue(display);
    ProxyPtr found = queue ? findGlobal(display, *queue, Messages::shell) : ProxyPtr();
    if (!found) {
        return nullptr;
    }
    wl_proxy_set_queue(found.get(), nullptr);
    return std::unique_ptr<LayerShell>(new LayerShell(std::move(found)));
}

struct LayerSurface::Events {
    static void configured(
        void* self, wl_proxy* proxy, std::uint32_t serial, std::uint32_t width, std::uint32_t height) {
        wl_proxy_marshal(proxy, Messages::ackConfigure, serial);
        static_cast<LayerSurface*>(self)->needs_.onSize(static_cast<int>(width), static_cast<int>(height));
    }

    static void closed(void* self, wl_proxy* /*proxy*/) {
        static_cast<LayerSurface*>(self)->needs_.onClosed();
    }

    static constexpr Messages::SurfaceListener listener{.configure = configured, .closed = closed};
};

LayerSurface::LayerSurface(Needs needs)
    : needs_(std::move(needs)),
      proxy_(wl_proxy_marshal_constructor(
          needs_.shell.proxy(), Messages::getLayerSurface, &Messages::surface, nullptr, &needs_.surface,
          needs_.screen, layerFor(needs_.cover), "drop-down")) {
    using Function = void (*)();
    // NOLINTNEXTLINE: libwayland takes a listener as a list of functions of any type, and leaves it as it is
    wl_proxy_add_listener(proxy_.get(), (Function*)(&Events::listener), this);
    wl_proxy_marshal(proxy_.get(), Messages::setSize, std::uint32_t{0}, std::uint32_t{0}); // what is there
    wl_proxy_marshal(proxy_.get(), Messages::setAnchor, std::uint32_t{Messages::allEdges});
    if (needs_.cover == Cover::workArea) {
        wl_proxy_marshal(
            proxy_.get(), Messages::setKeyboardInteractivity, std::uint32_t{Messages::exclusive});
    } else {
        wl_proxy_marshal(proxy_.get(), Messages::setExclusiveZone, Messages::coveringPanels);
    }
    wl_surface_commit(&needs_.surface);
}

LayerSurface::~LayerSurface() {
    wl_proxy_marshal(proxy_.get(), Messages::destroy);
}

} // namespace tarnwick::Wayland
