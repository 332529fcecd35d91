// Who owns a name on the bus.
#pragma once

#include "platform/bus/BusConnection.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

class BusMessage;

enum class NameNews {
    found,   ///< the owner that a new connection finds
    changed, ///< since then; without an owner also when the connection is lost
};

/// Told the owner's unique name, empty while there is none: once after each connecting, and after that at
/// each change. What is called by name in between is answered by that owner, or by a later one.
using OwnerListener = std::function<void(const std::string& owner, NameNews news)>;

/// `bus` outlives the subscription. Asking for the owner does not start a service.
[[nodiscard]] Subscription watchName(BusConnection& bus, const std::string& name, OwnerListener listener);

/// What the bus daemon tells when a name gets another owner.
struct NameChange {
    std::string name;
    std::string owner; ///< a unique name; empty: none
};

/// The match for one name or, with `arg0namespace`, for all below it.
[[nodiscard]] std::string nameChangeRule(const std::string& name, const char* key = "arg0");
[[nodiscard]] std::optional<NameChange> nameChange(BusMessage& message);

} // namespace tarnwick
