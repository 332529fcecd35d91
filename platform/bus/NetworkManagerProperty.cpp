#include "platform/bus/NetworkManagerProperty.h"

#include "platform/bus/BusCall.h"

#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

constexpr const char* networkManager = "org.freedesktop.NetworkManager";

using NumberProperty = std::variant<std::monostate, std::uint32_t>;

} // namespace

NetworkManagerProperty::NetworkManagerProperty(BusConnection& systemBus, double patience)
    : bus_(systemBus), patience_(patience) {
}

/// By the owner of the name: a call by the name would start a NetworkManager that somebody has stopped.
void NetworkManagerProperty::ask(const std::string& name, Answer answer) {
    BusConnection::Call call = daemonCall("GetNameOwner");
    call.timeout = patience_;
    callBus<std::string>(
        bus_, call, std::tuple(std::string(networkManager)),
        lifeline_.guarded([this, name, answer = std::move(answer)](const std::optional<std::string>& owner) {
            if (owner) {
                askOwner(*owner, name, answer);
            } else {
                answer(std::nullopt);
            }
        }));
}

void NetworkManagerProperty::askOwner(const std::string& owner, const std::string& name, Answer answer) {
    callBus<NumberProperty>(
        bus_,
        {
            .destination = owner,
            .path = "/org/freedesktop/NetworkManager",
            .interface = "org.freedesktop.DBus.Properties",
            .method = "Get",
            .timeout = patience_,
        },
        std::tuple(std::string(networkManager), name),
        lifeline_.guarded([answer = std::move(answer)](const std::optional<NumberProperty>& reply) {
            const auto* const value = reply ? std::get_if<std::uint32_t>(&*reply) : nullptr;
            answer(value != nullptr ? std::optional(*value) : std::nullopt);
        }));
}

} // namespace tarnwick
