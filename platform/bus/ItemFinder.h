// Asks the desktop's shell where it shows the status item.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/ports/StatusItem.h"

#include <functional>
#include <optional>

namespace tarnwick {

/// GNOME Shell tells no program where its item is; an extension of ours does (packaging/gnome). Main thread.
class ItemFinder {
public:
    static constexpr double patience = 0.5; ///< seconds for the shell's answer

    /// `bus` is the session's and outlives it.
    explicit ItemFinder(BusConnection& bus);

    /// The item that this program registered. `found` is called once, later, unless the finder ends before:
    /// with the item's middle, or with nothing where the shell does not tell.
    void find(std::function<void(std::optional<ScreenPoint>)> found);

private:
    BusConnection& bus_;
    Lifeline lifeline_;
};

} // namespace tarnwick
