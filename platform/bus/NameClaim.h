// A name on the bus that several programs want, and one has at a time.
#pragma once

#include "platform/bus/BusConnection.h"

#include <string>

namespace tarnwick {

/// Wants the name for as long as it lives, on every new connection again. The bus gives it to the program
/// that asked first; when that one leaves, to the next in line. Main thread.
class NameClaim {
public:
    enum class Rank {
        ordinary,
        first, ///< takes the name from one that is ordinary, which stands in line again
    };

    /// `bus` outlives the claim, which does not open it.
    NameClaim(BusConnection& bus, std::string name, Rank rank);
    NameClaim(const NameClaim&) = delete;
    NameClaim& operator=(const NameClaim&) = delete;
    ~NameClaim();

    /// False also while nothing is known: without a bus, or before it has answered.
    [[nodiscard]] bool isAnothers() const { return isAnothers_; }

private:
    void ask();

    BusConnection& bus_;
    std::string name_;
    Rank rank_;
    bool isAnothers_ = false;
    Subscription stateSubscription_;
    Subscription ownerWatch_;
};

} // namespace tarnwick
