// The objects that a Wayland compositor offers to every program.
#pragma once

#include <memory>

struct wl_display;
struct wl_event_queue;
struct wl_interface;
struct wl_proxy;

namespace tarnwick::Wayland {

struct DestroyProxy {
    void operator()(wl_proxy* proxy) const;
};

/// An object of the connection; the compositor is not told of its end.
using ProxyPtr = std::unique_ptr<wl_proxy, DestroyProxy>;

struct DestroyQueue {
    void operator()(wl_event_queue* queue) const;
};

/// For events that the toolkit does not hand out. Outlives the objects on it.
using QueuePtr = std::unique_ptr<wl_event_queue, DestroyQueue>;

[[nodiscard]] QueuePtr newQueue(wl_display& display);

/// Asks the compositor, and waits for its answer. Version 1 of the object, on that queue; null where there is
/// none.
[[nodiscard]] ProxyPtr findGlobal(wl_display& display, wl_event_queue& queue, const wl_interface& interface);

} // namespace tarnwick::Wayland
