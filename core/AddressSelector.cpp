#include "core/AddressSelector.h"

#include <algorithm>

namespace tarnwick {

int AddressSelector::next() const {
    return (index + 1) % std::max(count, 1);
}

bool AddressSelector::sent(double now) {
    if (!waitingSince) {
        waitingSince = now;
    }
    if (now - *waitingSince < deadline) {
        return false;
    }
    // A single address stays the current one; its deadline starts anew with the next send.
    return sendFailed();
}

bool AddressSelector::sendFailed() {
    waitingSince.reset();
    if (count < 2 || next() == index) {
        return false;
    }
    index = next();
    return true;
}

bool AddressSelector::replied(int from) {
    if (from == index) {
        waitingSince.reset();
        return false;
    }
    if (from < 0 || from >= count) {
        return false;
    }
    waitingSince.reset();
    if (count < 2) {
        return false;
    }
    index = from;
    return true;
}

} // namespace tarnwick
