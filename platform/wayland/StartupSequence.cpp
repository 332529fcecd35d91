#include "platform/wayland/StartupSequence.h"

#include "platform/wayland/Globals.h"
#include "platform/wayland/Message.h"

#include <wayland-client-protocol.h>

#include <array>
#include <cstdint>

namespace tarnwick::Wayland {

namespace {

// The messages of the Wayland protocol gtk-shell, version 1.

enum GtkShellRequest : std::uint32_t { setStartupId = 1 };

/// This program has no objects of the shell's own kind.
constexpr std::array<const wl_interface*, 2> gtkShellTypes{nullptr, &wl_surface_interface};

constexpr std::array gtkShellRequests{
    message("get_gtk_surface", "no", gtkShellTypes),
    message("set_startup_id", "?s", gtkShellTypes),
    message("system_bell", "?o", gtkShellTypes),
};

constexpr std::array gtkShellEvents{message("capabilities", "u", gtkShellTypes)};

constinit const wl_interface gtkShell{
    .name = "gtk_shell1",
    .version = 1,
    .method_count = static_cast<int>(gtkShellRequests.size()),
    .methods = gtkShellRequests.data(),
    .event_count = static_cast<int>(gtkShellEvents.size()),
    .events = gtkShellEvents.data()};

} // namespace

void endStartupSequence(wl_display& display, const std::string& token) {
    const QueuePtr queue = token.empty() ? nullptr : newQueue(display);
    const ProxyPtr shell = queue ? findGlobal(display, *queue, gtkShell) : ProxyPtr();
    if (shell) {
        wl_proxy_marshal(shell.get(), setStartupId, token.c_str());
        wl_display_flush(&display);
    }
}

} // namespace tarnwick::Wayland
