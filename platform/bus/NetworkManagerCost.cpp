#include "platform/bus/NetworkManagerCost.h"

#include "platform/bus/BusCall.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

constexpr const char* networkManager = "org.freedesktop.NetworkManager";

/// The other values: 0 unknown, 2 not metered, 4 guessed that it is not.
constexpr std::uint32_t metered = 1;
constexpr std::uint32_t guessedMetered = 3;

using Metered = std::variant<std::monostate, std::uint32_t>;

bool isMetered(const std::optional<Metered>& reply) {
    const auto* const value = reply ? std::get_if<std::uint32_t>(&*reply) : nullptr;
    return value != nullptr && (*value == metered || *value == guessedMetered);
}

} // namespace

NetworkManagerCost::NetworkManagerCost(BusConnection& systemBus, double patience)
    : bus_(systemBus), patience_(patience) {
}

/// By the owner of the name: a call by the name would start a NetworkManager that somebody has stopped.
void NetworkManagerCost::ask(std::function<void(bool isMetered)> answer) {
    BusConnection::Call call = daemonCall("GetNameOwner");
    call.timeout = patience_;
    callBus<std::string>(
        bus_, call, std::tuple(std::string(networkManager)),
        lifeline_.guarded([this, answer = std::move(answer)](const std::optional<std::string>& owner) {
            if (owner) {
                askOwner(*owner, answer);
            } else {
                answer(false);
            }
        }));
}

void NetworkManagerCost::askOwner(const std::string& owner, std::function<void(bool isMetered)> answer) {
    callBus<Metered>(
        bus_,
        {
            .destination = owner,
            .path = "/org/freedesktop/NetworkManager",
            .interface = "org.freedesktop.DBus.Properties",
            .method = "Get",
            .timeout = patience_,
        },
        std::tuple(std::string(networkManager), std::string("Metered")),
        lifeline_.guarded(
            [answer = std::move(answer)](const std::optional<Metered>& reply) { answer(isMetered(reply)); }));
}

} // namespace tarnwick
