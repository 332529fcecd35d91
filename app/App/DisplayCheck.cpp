#include "app/App/DisplayCheck.h"

#include "core/FileDescriptor.h"
#include "platform/x11/X11Connection.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sys/socket.h>
#include <sys/un.h>

namespace tarnwick::DisplayCheck {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool acceptsConnections(const std::string& path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.size() >= sizeof address.sun_path) {
        return false;
    }
    std::ranges::copy(path, std::begin(address.sun_path));
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the interface of sockets
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    return socket.isOpen() && ::connect(socket.get(), generic, sizeof address) == 0;
}

/// `name` is a socket in the user's run-time folder, or a whole path.
bool hasCompositor(const std::string& name) {
    return acceptsConnections(std::filesystem::path(variable("XDG_RUNTIME_DIR")) / name);
}

} // namespace

std::optional<std::string> problem() {
    if (!variable("QT_QPA_PLATFORM").empty() || !variable("WAYLAND_SOCKET").empty()) {
        return std::nullopt;
    }
    const std::string compositor = variable("WAYLAND_DISPLAY");
    const std::string server = variable("DISPLAY");
    if (compositor.empty() && server.empty()) {
        return "there is no display here";
    }
    if ((!compositor.empty() && hasCompositor(compositor)) || (!server.empty() && X11::connect())) {
        return std::nullopt;
    }
    return "the display \"" + (server.empty() ? compositor : server) + "\" does not answer";
}

} // namespace tarnwick::DisplayCheck
