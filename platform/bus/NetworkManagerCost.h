// Whether the internet connection is metered, as the system's network manager sees it.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/ConnectionCost.h"

#include <functional>
#include <string>

namespace tarnwick {

/// A connection counts as metered where the user has said so, and where NetworkManager takes it for one (a
/// telephone's hot spot, for example). Where it does not run, or there is no bus, none does. Main thread.
class NetworkManagerCost final : public ConnectionCost {
public:
    /// Seconds for each of two answers, the bus daemon's and NetworkManager's.
    static constexpr double usualPatience = 5;

    /// `systemBus` is the system's and outlives it.
    explicit NetworkManagerCost(BusConnection& systemBus, double patience = usualPatience);

    void ask(std::function<void(bool isMetered)> answer) override;

private:
    void askOwner(const std::string& owner, std::function<void(bool isMetered)> answer);

    BusConnection& bus_;
    double patience_;
    Lifeline lifeline_;
};

} // namespace tarnwick
