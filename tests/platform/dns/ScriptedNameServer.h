// A name server on loopback that does with each query what the test says.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <netdb.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace tarnwick::test {

class ScriptedNameServer {
public:
    using Bytes = std::vector<std::uint8_t>;
    /// What it sends back, in this order.
    using Script = std::function<std::vector<Bytes>(const Bytes& query)>;

    /// At a port of the system's choice, or at one that another server has at its address.
    ScriptedNameServer(RunLoop& loop, const std::string& address, Script script, std::uint16_t port = 0)
        : script_(std::move(script)), socket_(bound(address, port)) {
        watch_ = loop.watchReadable(socket_.get(), [this] { serve(); });
    }

    [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }

    [[nodiscard]] std::uint16_t port() const {
        sockaddr_storage own{};
        socklen_t size = sizeof own;
        ::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&own), &size);
        // Both kinds of address have it at the same place.
        return ntohs(reinterpret_cast<const sockaddr_in&>(own).sin_port);
    }

    [[nodiscard]] const std::vector<Bytes>& queries() const { return queries_; }

    /// Who asked last.
    [[nodiscard]] const sockaddr_storage& asker() const { return asker_; }

private:
    static FileDescriptor bound(const std::string& address, std::uint16_t port) {
        addrinfo hints{};
        hints.ai_flags = AI_NUMERICHOST;
        hints.ai_socktype = SOCK_DGRAM;
        addrinfo* own = nullptr;
        if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &own) != 0) {
            return {};
        }
        FileDescriptor socket(::socket(own->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const bool isBound = ::bind(socket.get(), own->ai_addr, own->ai_addrlen) == 0;
        ::freeaddrinfo(own);
        return isBound ? std::move(socket) : FileDescriptor();
    }

    void serve() {
        std::array<std::uint8_t, 512> buffer{};
        socklen_t size = sizeof asker_;
        auto* const asker = reinterpret_cast<sockaddr*>(&asker_);
        const ssize_t length = ::recvfrom(socket_.get(), buffer.data(), buffer.size(), 0, asker, &size);
        if (length < 0) {
            return;
        }
        queries_.emplace_back(buffer.begin(), buffer.begin() + length);
        for (const Bytes& message : script_(queries_.back())) {
            ::sendto(socket_.get(), message.data(), message.size(), 0, asker, size);
        }
    }

    Script script_;
    FileDescriptor socket_;
    std::vector<Bytes> queries_;
    sockaddr_storage asker_{};
    RunLoop::Handle watch_;
};

} // namespace tarnwick::test
