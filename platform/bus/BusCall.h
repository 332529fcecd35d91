// Typed calls over a bus connection.
#pragma once

#include "platform/bus/BusConnection.h"
#include "platform/bus/BusMessage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tarnwick {

/// `answered` is given the first result of the call, or nothing when it failed or is of another type.
template<typename Result, typename... Arguments, typename Answered>
void callBus(
    BusConnection& bus, const BusConnection::Call& call, const std::tuple<Arguments...>& arguments,
    Answered answered) {
    const auto append = [&arguments](BusMessage& message) {
        return std::apply([&message](const auto&... value) { return message.append(value...); }, arguments);
    };
    bus.call(call, append, [answered = std::move(answered)](BusMessage* reply) {
        std::optional<Result> result;
        if constexpr (std::is_same_v<Result, NoResult>) {
            result = reply != nullptr ? std::optional(NoResult()) : std::nullopt;
        } else if (auto values = reply != nullptr ? reply->read<Result>() : std::nullopt) {
            result = std::get<0>(std::move(*values));
        }
        answered(std::move(result));
    });
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
