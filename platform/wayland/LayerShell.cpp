#include "platform/wayland/LayerShell.h"

#include "platform/wayland/LayerShellMessages.h"

#include <wayland-client-protocol.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace tarnwick::Wayland {

namespace Messages = LayerShellMessages;

namespace {

struct DestroyQueue {
    void operator()(wl_event_queue* queue) const { wl_event_queue_destroy(queue); }
};

struct DestroyWrapper {
    void operator()(wl_display* wrapper) const { wl_proxy_wrapper_destroy(wrapper); }
};

void globalAnnounced(
    void* found, wl_registry* registry, std::uint32_t name, const char* interface,
    std::uint32_t /*version*/) {
    if (std::string_view(interface) == Messages::shell.name) {
        static_cast<ProxyPtr*>(found)->reset(
            static_cast<wl_proxy*>(wl_registry_bind(registry, name, &Messages::shell, 1)));
    }
}

void globalRemoved(void* /*found*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {
}

constexpr wl_registry_listener registryListener{.global = globalAnnounced, .global_remove = globalRemoved};

std::uint32_t layerFor(LayerSurface::Cover cover) {
    return cover == LayerSurface::Cover::screen ? Messages::overlayLayer : Messages::topLayer;
}

wl_proxy* proxyOf(void* object) {
    return static_cast<wl_proxy*>(object);
}

} // namespace

void DestroyProxy::operator()(wl_proxy* proxy) const {
    wl_proxy_destroy(proxy);
}

std::unique_ptr<LayerShell> LayerShell::find(wl_display& display) {
    // On a queue of its own: waiting on the display's would hand out the toolkit's events here.
    const std::unique_ptr<wl_event_queue, DestroyQueue> queue(wl_display_create_queue(&display));
    const std::unique_ptr<wl_display, DestroyWrapper> wrapper(
        static_cast<wl_display*>(wl_proxy_create_wrapper(&display)));
    if (!queue || !wrapper) {
        return nullptr;
    }
    wl_proxy_set_queue(proxyOf(wrapper.get()), queue.get());
    wl_registry* const registry = wl_display_get_registry(wrapper.get());
    const ProxyPtr registryOwner(proxyOf(registry));
    ProxyPtr found;
    wl_registry_add_listener(registry, &registryListener, &found);
    wl_display_roundtrip_queue(&display, queue.get());
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
