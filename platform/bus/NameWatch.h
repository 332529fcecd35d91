// Follows the owner of a name on the bus.
#pragma once

#include "platform/bus/BusConnection.h"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

class BusMessage;

enum class NameNews {
    first,   ///< the first answer on a connection; empty: the name has no owner
    changed, ///< another owner than before; none also when the connection is lost
};

/// Told the owner's unique name, or an empty text while there is none: once on each new connection, when the
/// bus daemon has answered, then at each change. A call by name reaches the owner told last, or a newer one.
using OwnerListener = std::function<void(const std::string& owner, NameNews news)>;

/// `bus` outlives the subscription. Asking for the owner does not start a service. When the bus daemon fails
/// to answer, it is asked again after `retryDelay` seconds.
[[nodiscard]] Subscription watchName(
    BusConnection& bus, const std::string& name, OwnerListener listener, double retryDelay = 30);

/// A name has another owner.
struct NameChange {
    std::string name;
    std::string owner; ///< a unique name; empty: none
};

/// The match for one name or, with `arg0namespace`, for all below it.
[[nodiscard]] std::string nameChangeRule(const std::string& name, const char* key = "arg0");
/// Nothing unless the bus daemon itself sent it: any program may send such a signal straight to us.
[[nodiscard]] std::optional<NameChange> nameChange(BusMessage& message);

} // namespace tarnwick
