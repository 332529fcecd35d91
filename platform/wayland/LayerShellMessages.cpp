#include "platform/wayland/LayerShellMessages.h"

#include <wayland-client-protocol.h>

#include <array>

namespace tarnwick::Wayland::LayerShellMessages {

namespace {

/// For arguments that are no objects, and for the popup that this program never makes.
constexpr std::array<const wl_interface*, 4> plainTypes{};

constexpr std::array<const wl_interface*, 5> surfaceTypes{
    &surface, &wl_surface_interface, &wl_output_interface, nullptr, nullptr};

constexpr wl_message message(const char* name, const char* signature) {
    // libwayland declares the list as one of pointers that it may change, and does not change it.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return {
        .name = name, .signature = signature, .types = const_cast<const wl_interface**>(plainTypes.data())};
}

constexpr std::array shellRequests{wl_message{
    .name = "get_layer_surface",
    .signature = "no?ous",
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): as above
    .types = const_cast<const wl_interface**>(surfaceTypes.data())}};

constexpr std::array surfaceRequests{
    message("set_size", "uu"),
    message("set_anchor", "u"),
    message("set_exclusive_zone", "i"),
    message("set_margin", "iiii"),
    message("set_keyboard_interactivity", "u"),
    message("get_popup", "o"),
    message("ack_configure", "u"),
    message("destroy", ""),
};

constexpr std::array surfaceEvents{
    message("configure", "uuu"),
    message("closed", ""),
};

} // namespace

constinit const wl_interface shell{
    .name = "zwlr_layer_shell_v1",
    .version = 1,
    .method_count = static_cast<int>(shellRequests.size()),
    .methods = shellRequests.data(),
    .event_count = 0,
    .events = nullptr};

constinit const wl_interface surface{
    .name = "zwlr_layer_surface_v1",
    .version = 1,
    .method_count = static_cast<int>(surfaceRequests.size()),
    .methods = surfaceRequests.data(),
    .event_count = static_cast<int>(surfaceEvents.size()),
    .events = surfaceEvents.data()};

} // namespace tarnwick::Wayland::LayerShellMessages
