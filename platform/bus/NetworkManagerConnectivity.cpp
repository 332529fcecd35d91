#include "platform/bus/NetworkManagerConnectivity.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace tarnwick {

namespace {

constexpr std::uint32_t behindPortal = 2; ///< as NetworkManager has it

} // namespace

NetworkManagerConnectivity::NetworkManagerConnectivity(BusConnection& systemBus, double patience)
    : property_(systemBus, patience) {
}

void NetworkManagerConnectivity::ask(std::function<void(Connectivity)> answer) {
    property_.ask("Connectivity", [answer = std::move(answer)](std::optional<std::uint32_t> value) {
        answer(value == behindPortal ? Connectivity::portal : Connectivity::unknown);
    });
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the analyzer loses the function in the move
}

} // namespace tarnwick
