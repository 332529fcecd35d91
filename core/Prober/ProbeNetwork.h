// What learning the path needs from the network: echo requests that may take only so many hops.
#pragma once

#include "core/Pinger/PingNetwork.h"
#include "core/ResolvedAddress.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

struct ProbeAnswer {
    enum class Kind {
        reply,        ///< of the host
        timeExceeded, ///< of the router where the hops ended
        unreachable,  ///< a router's word that the host, its network or the way there is not available
        forbidden,    ///< a router's word that a rule of its own keeps the request from going on
    };

    Kind kind{};
    std::uint64_t id = 0;
    std::string sender{}; ///< in numeric form
    double at = 0;        ///< monotonic seconds of its arrival
};

/// An open socket of one address family, closed by its destruction. Main thread.
class ProbeSocket {
public:
    ProbeSocket() = default;
    ProbeSocket(const ProbeSocket&) = delete;
    ProbeSocket& operator=(const ProbeSocket&) = delete;
    virtual ~ProbeSocket() = default;

    /// `hopLimit` is from 1 to 255. Never blocks. False when the system did not take it.
    virtual bool send(std::uint64_t id, const ResolvedAddress& to, int hopLimit) = 0;
    /// The next waiting answer to one of this socket's requests; nothing when none waits. Never blocks.
    [[nodiscard]] virtual std::optional<ProbeAnswer> receive() = 0;
};

/// Main thread. Outlives its sockets.
class ProbeNetwork {
public:
    using OpenResult = std::variant<std::unique_ptr<ProbeSocket>, SocketError>;

    ProbeNetwork() = default;
    ProbeNetwork(const ProbeNetwork&) = delete;
    ProbeNetwork& operator=(const ProbeNetwork&) = delete;
    virtual ~ProbeNetwork() = default;

    /// `onReadable` is called while something waits, until the socket is destroyed.
    [[nodiscard]] virtual OpenResult open(std::int32_t family, std::function<void()> onReadable) = 0;
};

} // namespace tarnwick
