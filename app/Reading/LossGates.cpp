#include "app/Reading/LossGates.h"

namespace tarnwick {

std::optional<int> LossGates::update(
    std::optional<double> lossPercent, MenuBarTitle::LossMode mode, double now) {
    const double percent = lossPercent.value_or(0);
    const bool isLossy = percent > 0;
    const bool needsTwoDigits = MenuBarTitle::displayedLoss(percent) >= 10;
    const bool lossOpen = loss_.update(isLossy, now);
    const bool twoDigitsOpen = twoDigits_.update(needsTwoDigits, now);
    isHolding_ = (lossOpen && !isLossy) || (twoDigitsOpen && !needsTwoDigits);
    if (!MenuBarTitle::showsLoss(mode, lossOpen)) {
        return std::nullopt;
    }
    return twoDigitsOpen ? 2 : 1;
}

} // namespace tarnwick
