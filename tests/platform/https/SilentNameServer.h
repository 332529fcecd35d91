// A name server that takes queries and never answers, and who waits for one.
#pragma once

#include "core/FileDescriptor.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/support/TemporaryFolder.h"

#include <arpa/inet.h>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/socket.h>

namespace tarnwick::test {

/// In mounts of the program's own, until the end of the object.
class SilentNameServer {
public:
    SilentNameServer() {
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_port = htons(53);
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 76);
        std::ofstream(folder_.path() / "resolv.conf")
            << "nameserver 127.0.0.77\noptions timeout:1 attempts:1\n";
        std::ofstream(folder_.path() / "nsswitch.conf") << "hosts: dns\n";
        isAsked_ = ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0
                   && putInPlace(folder_.path() / "resolv.conf", places[0])
                   && putInPlace(folder_.path() / "nsswitch.conf", places[1]);
    }

    SilentNameServer(const SilentNameServer&) = delete;
    SilentNameServer& operator=(const SilentNameServer&) = delete;

    ~SilentNameServer() {
        for (const auto* const place : places) {
            ::umount2(place, MNT_DETACH);
        }
    }

    /// False where it can't be put in the place of the system's.
    [[nodiscard]] bool isAsked() const { return isAsked_; }

    /// Whether a query has come within ten seconds.
    [[nodiscard]] bool hasQuery() const {
        pollfd question{.fd = socket_.get(), .events = POLLIN, .revents = 0};
        return ::poll(&question, 1, 10'000) == 1;
    }

private:
    static constexpr std::array<const char*, 2> places = {"/etc/resolv.conf", "/etc/nsswitch.conf"};

    TemporaryFolder folder_;
    FileDescriptor socket_{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    bool isAsked_ = false;
};

/// Of this program.
[[nodiscard]] inline int threadsNamed(std::string_view name) {
    int count = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(thread.path() / "comm");
        std::string line;
        count += std::getline(file, line) && line == name ? 1 : 0;
    }
    return count;
}

} // namespace tarnwick::test
