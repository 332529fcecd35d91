// What the pinger needs from the network. Behind it are the system's resolver and sockets, or a simulation.
#pragma once

#include "core/PingError.h"
#include "core/ResolvedAddress.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

using Resolution = std::variant<std::vector<ResolvedAddress>, PingError>;

/// Why a socket can't be opened, in the system's words.
struct SocketError {
    std::string text;
};

/// What became of a message that was to be sent.
struct SendOutcome {
    bool isSent; ///< the system took the whole message
    double at;   ///< monotonic seconds immediately before the system was given it
};

struct ReceivedDatagram {
    std::size_t size;
    double at; ///< monotonic seconds of its arrival, which may lie before the reading
};

/// An open datagram ICMP socket of one address family, closed by its destruction. Main thread.
class EchoSocket {
public:
    EchoSocket() = default;
    EchoSocket(const EchoSocket&) = delete;
    EchoSocket& operator=(const EchoSocket&) = delete;
    virtual ~EchoSocket() = default;

    /// Replies come back to this socket only if the requests carry this identifier.
    [[nodiscard]] virtual std::uint16_t identifier() const = 0;
    /// Never blocks.
    virtual SendOutcome send(std::span<const std::uint8_t> message, const ResolvedAddress& to) = 0;
    /// The next waiting datagram, cut to the buffer; nothing when none waits, or on an error. Never blocks.
    virtual std::optional<ReceivedDatagram> receive(std::span<std::uint8_t> buffer) = 0;
};

/// Main thread. Outlives every pinger and socket made from it.
class PingNetwork {
public:
    using ResolveDone = std::function<void(const Resolution&)>;
    using OpenResult = std::variant<std::unique_ptr<EchoSocket>, SocketError>;

    PingNetwork() = default;
    PingNetwork(const PingNetwork&) = delete;
    PingNetwork& operator=(const PingNetwork&) = delete;
    virtual ~PingNetwork() = default;

    /// Calls `done` later on the main thread, never from inside this call; perhaps after minutes, perhaps
    /// never.
    virtual void resolve(const std::string& host, ResolveDone done) = 0;
    /// `onReadable` is called while datagrams wait, until the socket is destroyed.
    [[nodiscard]] virtual OpenResult open(
        std::int32_t family, std::uint16_t wantedIdentifier, std::function<void()> onReadable) = 0;
};

} // namespace tarnwick
