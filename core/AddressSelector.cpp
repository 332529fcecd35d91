#include "core/AddressSelector.h"

namespace tarnwick {

bool AddressSelector::sent(double now) {
    if (!waitingSince) {
        waitingSince = now;
    }
    if (now - *waitingSince < deadline) {
        return false;
    }
    return moveOn();
}

bool AddressSelector::sendFailed() {
    return moveOn();
}

/// A single address stays the current one; its deadline starts anew with the next send.
bool AddressSelector::moveOn() {
    waitingSince.reset();
    hasAnswered = false;
    if (count < 2) {
        return false;
    }
    index = (index + 1) % count;
    return true;
}

bool AddressSelector::replied(int from) {
    if (from == index) {
        waitingSince.reset();
        hasAnswered = true;
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
    hasAnswered = true;
    return true;
}

} // namespace tarnwick
