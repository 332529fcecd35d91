// Typed calls over a bus connection.
#pragma once

#include "platform/bus/BusConnection.h"
#include "platform/bus/BusType.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tarnwick {

/// What a call has led to.
template<typename Result>
struct BusReply {
    std::optional<Result> result{}; ///< nothing when the call failed, or when its result is of another type
    std::string error{};            ///< the name of an error that came as the answer; empty when none came
};

/// `answered` is given a `BusReply` with the first result of the call.
template<typename Result, typename... Arguments, typename Answered>
void askBus(
    BusConnection& bus, const BusConnection::Call& call, const std::tuple<Arguments...>& arguments,
    Answered answered) {
    const auto append = [&arguments](BusMessage& message) {
        return std::apply([&message](const auto&... value) { return message.append(value...); }, arguments);
    };
    bus.call(call, append, [answered = std::move(answered)](BusMessage* message) {
        BusReply<Result> reply;
        if (message != nullptr) {
            reply.error = message->errorName();
        }
        if (message != nullptr && reply.error.empty()) {
            if constexpr (std::is_same_v<Result, NoResult>) {
                reply.result = NoResult();
            } else if (auto values = message->read<Result>()) {
                reply.result = std::get<0>(std::move(*values));
            }
        }
        answered(std::move(reply));
    });
}

/// The same where the kind of failure does not matter: `answered` is given the result, or nothing.
template<typename Result, typename... Arguments, typename Answered>
void callBus(
    BusConnection& bus, const BusConnection::Call& call, const std::tuple<Arguments...>& arguments,
    Answered answered) {
    // NOLINTNEXTLINE(performance-unnecessary-value-param): some results can only be moved
    askBus<Result>(bus, call, arguments, [answered = std::move(answered)](BusReply<Result> reply) {
        answered(std::move(reply.result));
    });
}

/// The same for a call whose answer does not matter.
template<typename... Arguments>
void tellBus(BusConnection& bus, const BusConnection::Call& call, const std::tuple<Arguments...>& arguments) {
    callBus<NoResult>(bus, call, arguments, [](const std::optional<NoResult>&) {});
}

/// A call of the bus daemon itself.
inline BusConnection::Call daemonCall(const char* method) {
    return {
        .destination = "org.freedesktop.DBus",
        .path = "/org/freedesktop/DBus",
        .interface = "org.freedesktop.DBus",
        .method = method,
    };
}

/// Asks for a name, without queueing for it. `answered` is given whether the name is ours, or nothing when
/// the request failed.
template<typename Answered>
void requestName(BusConnection& bus, const std::string& name, Answered answered) {
    static constexpr std::uint32_t doNotQueue = 4;
    static constexpr std::uint32_t primaryOwner = 1;
    static constexpr std::uint32_t alreadyOwner = 4;
    callBus<std::uint32_t>(
        bus, daemonCall("RequestName"), std::tuple(name, doNotQueue),
        [answered = std::move(answered)](const std::optional<std::uint32_t>& reply) {
            answered(reply ? std::optional(*reply == primaryOwner || *reply == alreadyOwner) : std::nullopt);
        });
}

} // namespace tarnwick
