#include "platform/wayland/ActivationToken.h"

#include "platform/wayland/Globals.h"
#include "platform/wayland/Message.h"

#include <wayland-client-protocol.h>

#include <array>

namespace tarnwick::Wayland {

namespace {

// The messages of the Wayland protocol xdg-activation-v1, version 1.

enum ActivationRequest : std::uint32_t { destroyActivation = 0, getToken = 1 };

enum TokenRequest : std::uint32_t { setSerial = 0, setSurface = 2, commit = 3, destroyToken = 4 };

/// In the order of the protocol.
struct TokenListener {
    void (*done)(void* data, wl_proxy* token, const char* text);
};

extern const wl_interface tokenInterface;

constexpr std::array<const wl_interface*, 1> newTokenTypes{&tokenInterface};
constexpr std::array<const wl_interface*, 2> activateTypes{nullptr, &wl_surface_interface};
constexpr std::array<const wl_interface*, 2> serialTypes{nullptr, &wl_seat_interface};
constexpr std::array<const wl_interface*, 1> surfaceTypesOfToken{&wl_surface_interface};
constexpr std::array<const wl_interface*, 1> noTypes{};

constexpr std::array activationRequests{
    message("destroy", "", noTypes),
    message("get_activation_token", "n", newTokenTypes),
    message("activate", "so", activateTypes),
};

constexpr std::array tokenRequests{
    message("set_serial", "uo", serialTypes),
    message("set_app_id", "s", noTypes),
    message("set_surface", "o", surfaceTypesOfToken),
    message("commit", "", noTypes),
    message("destroy", "", noTypes),
};

constexpr std::array tokenEvents{message("done", "s", noTypes)};

constinit const wl_interface tokenInterface{
    .name = "xdg_activation_token_v1",
    .version = 1,
    .method_count = static_cast<int>(tokenRequests.size()),
    .methods = tokenRequests.data(),
    .event_count = static_cast<int>(tokenEvents.size()),
    .events = tokenEvents.data()};

constinit const wl_interface activationInterface{
    .name = "xdg_activation_v1",
    .version = 1,
    .method_count = static_cast<int>(activationRequests.size()),
    .methods = activationRequests.data(),
    .event_count = 0,
    .events = nullptr};

constexpr TokenListener tokenListener{.done = [](void* data, wl_proxy* /*token*/, const char* text) {
    *static_cast<std::string*>(data) = text;
}};

} // namespace

std::string activationToken(const TokenNeeds& needs) {
    const QueuePtr queue = newQueue(needs.display);
    const ProxyPtr activation = queue ? findGlobal(needs.display, *queue, activationInterface) : ProxyPtr();
    if (!activation) {
        return "";
    }
    std::string text;
    const ProxyPtr token(wl_proxy_marshal_constructor(activation.get(), getToken, &tokenInterface, nullptr));
    using Function = void (*)();
    // NOLINTNEXTLINE: libwayland takes a listener as a list of functions of any type, and leaves it as it is
    wl_proxy_add_listener(token.get(), (Function*)(&tokenListener), &text);
    wl_proxy_marshal(token.get(), setSerial, needs.serial, &needs.seat);
    wl_proxy_marshal(token.get(), setSurface, &needs.surface);
    wl_proxy_marshal(token.get(), commit);
    wl_display_roundtrip_queue(&needs.display, queue.get());
    wl_proxy_marshal(token.get(), destroyToken);
    wl_proxy_marshal(activation.get(), destroyActivation);
    return text;
}

} // namespace tarnwick::Wayland
