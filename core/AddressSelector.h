// Chooses which of a host's addresses is pinged: the current one until it falls silent, then the next.
#pragma once

#include <optional>

namespace tarnwick {

struct AddressSelector {
    int count = 0;                                     ///< addresses to choose among
    double deadline = 4.0;                             ///< seconds that the current address may go unanswered
    int index = 0;                                     ///< the current address
    std::optional<double> waitingSince = std::nullopt; ///< monotonic time of the first unanswered send to it
    bool hasAnswered = false;                          ///< the current address, since it is the current one

    // Each returns whether `index` has moved to another address.

    /// A request went out at monotonic time `now`.
    bool sent(double now);
    /// A request could not be sent: the next address is the current one now.
    bool sendFailed();
    /// The address `from` answered. A late answer moves `index` back to it.
    bool replied(int from);

    /// The current address was sent to, and has never answered.
    [[nodiscard]] bool isInVain() const { return waitingSince && !hasAnswered; }

    friend bool operator==(const AddressSelector&, const AddressSelector&) = default;

private:
    bool moveOn();
};

} // namespace tarnwick
