// Typed calls over a bus connection. For the sources of this folder only: it brings in the library.
#pragma once

#include "platform/bus/BusConnection.h"

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tarnwick {

/// What a message carries; nothing when it carries something else.
template<typename... Values>
[[nodiscard]] std::optional<std::tuple<Values...>> valuesOf(sdbus::Message& message) {
    try {
        std::tuple<Values...> values;
        std::apply([&message](auto&... value) { (void)(message >> ... >> value); }, values);
        return values;
    } catch (const sdbus::Error&) {
        return std::nullopt;
    }
}

template<typename Value>
[[nodiscard]] std::optional<Value> valueOf(const sdbus::Variant& variant) {
    try {
        return variant.get<Value>();
    } catch (const sdbus::Error&) {
        return std::nullopt;
    }
}

/// Does something with a connection; whether it went well. It does not when the connection is going down,
/// which its users are told soon.
template<typename Function>
bool attempt(Function function) {
    try {
        function();
        return true;
    } catch (const sdbus::Error&) {
        return false;
    }
}

/// The result of a call that has none, or whose result nobody needs.
struct Done {};

/// `answered` is given the one result of the call, or nothing.
template<typename Result, typename... Arguments, typename Answered>
void callBus(
    BusConnection& bus, const BusConnection::Call& call, const std::tuple<Arguments...>& arguments,
    Answered answered) {
    bus.call(
        call,
        [&arguments](sdbus::MethodCall& message) {
            std::apply([&message](const auto&... value) { (void)(message << ... << value); }, arguments);
        },
        [answered = std::move(answered)](sdbus::MethodReply* reply) {
            std::optional<Result> result;
            if constexpr (std::is_same_v<Result, Done>) {
                result = reply != nullptr ? std::optional(Done()) : std::nullopt;
            } else if (auto values = reply != nullptr ? valuesOf<Result>(*reply) : std::nullopt) {
                result = std::get<0>(std::move(*values));
            }
            answered(result);
        });
}

/// Calls of the bus daemon itself.
inline BusConnection::Call daemonCall(const char* method) {
    return {
        .destination = "org.freedesktop.DBus",
        .path = "/org/freedesktop/DBus",
        .interface = "org.freedesktop.DBus",
        .method = method,
    };
}

/// Asks for a name that is neither queued for nor given up; `answered` learns whether it is ours, or nothing
/// where the bus refuses it.
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
