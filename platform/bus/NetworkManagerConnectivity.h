// Whether the network lets this machine through to the internet, as the system's network manager found out.
#pragma once

#include "platform/bus/NetworkManagerProperty.h"
#include "platform/ports/ConnectivityCheck.h"

#include <functional>

namespace tarnwick {

/// NetworkManager checks when a connection comes up and every few minutes, where the distribution or the user
/// lets it. Main thread.
class NetworkManagerConnectivity final : public ConnectivityCheck {
public:
    /// `systemBus` is the system's and outlives it. `patience` as `NetworkManagerProperty` has it.
    explicit NetworkManagerConnectivity(
        BusConnection& systemBus, double patience = NetworkManagerProperty::usualPatience);

    void ask(std::function<void(Connectivity)> answer) override;

private:
    NetworkManagerProperty property_;
};

} // namespace tarnwick
