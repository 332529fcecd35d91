#include "platform/bus/NetworkManagerCost.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace tarnwick {

namespace {

/// The other values: 0 unknown, 2 not metered, 4 guessed that it is not.
constexpr std::uint32_t metered = 1;
constexpr std::uint32_t guessedMetered = 3;

} // namespace

NetworkManagerCost::NetworkManagerCost(BusConnection& systemBus, double patience)
    : property_(systemBus, patience) {
}

void NetworkManagerCost::ask(std::function<void(bool isMetered)> answer) {
    property_.ask("Metered", [answer = std::move(answer)](std::optional<std::uint32_t> value) {
        answer(value == metered || value == guessedMetered);
    });
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the analyzer loses the function in the move
}

} // namespace tarnwick
