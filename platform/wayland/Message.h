// The messages of a Wayland protocol, as libwayland wants them told.
#pragma once

#include <array>
#include <cstddef>
#include <wayland-util.h>

namespace tarnwick::Wayland {

/// `types` has the interface of each argument, null where that is no object, and outlives the message.
template<std::size_t Count>
constexpr wl_message message(
    const char* name, const char* signature, const std::array<const wl_interface*, Count>& types) {
    // libwayland declares the list as one of pointers that it may change, and does not change it.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return {.name = name, .signature = signature, .types = const_cast<const wl_interface**>(types.data())};
}

} // namespace tarnwick::Wayland
