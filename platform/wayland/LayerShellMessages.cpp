#include "platform/wayland/LayerShellMessages.h"

#include "platform/wayland/Message.h"

#include <wayland-client-protocol.h>

#include <array>

namespace tarnwick::Wayland::LayerShellMessages {

namespace {

/// For arguments that are no objects, and for the popup that this program never makes.
constexpr std::array<const wl_interface*, 4> plainTypes{};

constexpr std::array<const wl_interface*, 5> surfaceTypes{
    &surface, &wl_surface_interface, &wl_output_interface, nullptr, nullptr};

constexpr std::array shellRequests{message("get_layer_surface", "no?ous", surfaceTypes)};

constexpr std::array surfaceRequests{
    message("set_size", "uu", plainTypes),
    message("set_anchor", "u", plainTypes),
    message("set_exclusive_zone", "i", plainTypes),
    message("set_margin", "iiii", plainTypes),
    message("set_keyboard_interactivity", "u", plainTypes),
    message("get_popup", "o", plainTypes),
    message("ack_configure", "u", plainTypes),
    message("destroy", "", plainTypes),
};

constexpr std::array surfaceEvents{
    message("configure", "uuu", plainTypes),
    message("closed", "", plainTypes),
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
