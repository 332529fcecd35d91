// Whether the internet connection is metered, as the system's network manager sees it.
#pragma once

#include "platform/bus/NetworkManagerProperty.h"
#include "platform/ports/ConnectionCost.h"

#include <functional>

namespace tarnwick {

/// A connection counts as metered where the user has said so, and where NetworkManager takes it for one (a
/// telephone's hot spot, for example). Where it does not run, or there is no bus, none does. Main thread.
class NetworkManagerCost final : public ConnectionCost {
public:
    /// `systemBus` is the system's and outlives it. `patience` as `NetworkManagerProperty` has it.
    explicit NetworkManagerCost(
        BusConnection& systemBus, double patience = NetworkManagerProperty::usualPatience);

    void ask(std::function<void(bool isMetered)> answer) override;

private:
    NetworkManagerProperty property_;
};

} // namespace tarnwick
