// What the system's network manager tells of the whole machine.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// Reads NetworkManager's properties, where it runs; never starts it. Main thread.
class NetworkManagerProperty {
public:
    /// Seconds for each of two answers, the bus daemon's and NetworkManager's.
    static constexpr double usualPatience = 5;

    using Answer = std::function<void(std::optional<std::uint32_t> value)>;

    /// `systemBus` is the system's and outlives it.
    NetworkManagerProperty(BusConnection& systemBus, double patience);

    /// `answer` is called once, soon; with nothing where there is no bus, no NetworkManager, or no number of
    /// that name. Never called when this object has ended.
    void ask(const std::string& name, Answer answer);

private:
    void askOwner(const std::string& owner, const std::string& name, Answer answer);

    BusConnection& bus_;
    double patience_;
    Lifeline lifeline_;
};

} // namespace tarnwick
