#include "platform/bus/NetworkManagerConnectivity.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace tarnwick {

namespace {

/// 0 means that it does not check.
Connectivity connectivityOf(std::uint32_t value) {
    switch (value) {
    case 1:
        return Connectivity::none;
    case 2:
        return Connectivity::portal;
    case 3:
        return Connectivity::limited;
    case 4:
        return Connectivity::full;
    default:
        return Connectivity::unknown;
    }
}

} // namespace

NetworkManagerConnectivity::NetworkManagerConnectivity(BusConnection& systemBus, double patience)
    : property_(systemBus, patience) {
}

void NetworkManagerConnectivity::ask(std::function<void(Connectivity)> answer) {
    property_.ask("Connectivity", [answer = std::move(answer)](std::optional<std::uint32_t> value) {
        answer(value ? connectivityOf(*value) : Connectivity::unknown);
    });
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the analyzer loses the function in the move
}

} // namespace tarnwick
