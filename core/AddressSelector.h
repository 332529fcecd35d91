// Which of a host's addresses is pinged: stay while it answers, move on when it falls silent.
#pragma once

#include <optional>

namespace tarnwick {

struct AddressSelector {
    int count = 0;                                     ///< addresses to choose among
    double deadline = 4.0;                             ///< seconds that the current address may go unanswered
    int index = 0;                                     ///< the current address
    std::optional<double> waitingSince = std::nullopt; ///< monotonic time of the first unanswered send to it

    // Each tells whether `index` has moved to another address.

    /// A request went out at monotonic time `now`.
    bool sent(double now);
    /// A request could not be sent: the next address is tried at once.
    bool sendFailed();
    /// The address `from` answered: a late answer brings the choice back to it.
    bool replied(int from);

    friend bool operator==(const AddressSelector&, const AddressSelector&) = default;

private:
    [[nodiscard]] int next() const;
};

} // namespace tarnwick
