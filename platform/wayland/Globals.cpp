#include "platform/wayland/Globals.h"

#include <wayland-client-protocol.h>

#include <cstdint>
#include <string_view>

namespace tarnwick::Wayland {

namespace {

struct DestroyWrapper {
    void operator()(wl_display* wrapper) const { wl_proxy_wrapper_destroy(wrapper); }
};

struct Search {
    const wl_interface& interface;
    ProxyPtr found{};
};

void globalAnnounced(
    void* data, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t /*version*/) {
    auto* const search = static_cast<Search*>(data);
    if (std::string_view(interface) == search->interface.name) {
        search->found.reset(static_cast<wl_proxy*>(wl_registry_bind(registry, name, &search->interface, 1)));
    }
}

void globalRemoved(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {
}

constexpr wl_registry_listener registryListener{.global = globalAnnounced, .global_remove = globalRemoved};

wl_proxy* proxyOf(void* object) {
    return static_cast<wl_proxy*>(object);
}

} // namespace

void DestroyProxy::operator()(wl_proxy* proxy) const {
    wl_proxy_destroy(proxy);
}

void DestroyQueue::operator()(wl_event_queue* queue) const {
    wl_event_queue_destroy(queue);
}

QueuePtr newQueue(wl_display& display) {
    return QueuePtr(wl_display_create_queue(&display));
}

ProxyPtr findGlobal(wl_display& display, wl_event_queue& queue, const wl_interface& interface) {
    const std::unique_ptr<wl_display, DestroyWrapper> wrapper(
        static_cast<wl_display*>(wl_proxy_create_wrapper(&display)));
    if (!wrapper) {
        return nullptr;
    }
    wl_proxy_set_queue(proxyOf(wrapper.get()), &queue);
    wl_registry* const registry = wl_display_get_registry(wrapper.get());
    const ProxyPtr registryOwner(proxyOf(registry));
    Search search{.interface = interface};
    wl_registry_add_listener(registry, &registryListener, &search);
    wl_display_roundtrip_queue(&display, &queue);
    return std::move(search.found);
}

} // namespace tarnwick::Wayland
