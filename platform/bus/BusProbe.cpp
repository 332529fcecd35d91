#include "platform/bus/BusProbe.h"

#include "core/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace tarnwick {

namespace {

/// Bytes are written as a percent sign and two hexadecimal digits where they would mean something else.
std::string unescaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        unsigned char byte = 0;
        const char* const digits = text.data() + 1;
        if (text.size() >= 3 && text.front() == '%'
            && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            result += static_cast<char>(byte);
            text.remove_prefix(3);
        } else {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

bool takesConnections(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return false;
    }
    path.copy(static_cast<char*>(address.sun_path), path.size());
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // EAGAIN: so many want to connect that it has to wait.
    return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
           || errno == EAGAIN;
}

} // namespace

bool mayBeListening(const std::string& address) {
    constexpr std::string_view localSocket = "unix:path=";
    std::string_view rest = address;
    while (!rest.empty()) {
        // One of several to be tried in turn, with options behind its first part.
        const std::string_view one = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(one.size() + 1, rest.size()));
        if (one.empty()) {
            continue;
        }
        if (!one.starts_with(localSocket)) {
            return true;
        }
        const std::string_view path = one.substr(localSocket.size());
        if (takesConnections(unescaped(path.substr(0, path.find(','))))) {
            return true;
        }
    }
    return false;
}

} // namespace tarnwick
