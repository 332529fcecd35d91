// Decides how many digits of loss the title shows, holding them for a while so that the text does not
// flicker.
#pragma once

#include "core/MenuBarTitle.h"

#include <optional>

namespace tarnwick {

class LossGates {
public:
    /// Seconds after which `update` is due again while a gate is only holding, even if nothing changes.
    static constexpr double recheckAfter = 5.0;

    /// Takes in the present loss (percent; nothing while it is unknown) at monotonic second `now`. Returns
    /// the digits to make room for, 1 or 2, or nothing when no loss is to be shown.
    std::optional<int> update(std::optional<double> lossPercent, MenuBarTitle::LossMode mode, double now);

    /// Whether a gate is open although its cause has gone.
    [[nodiscard]] bool isHolding() const { return isHolding_; }

private:
    MenuBarTitle::HoldGate loss_ = MenuBarTitle::HoldGate::lossSuffix();
    MenuBarTitle::HoldGate twoDigits_ = MenuBarTitle::HoldGate::twoDigitLoss();
    bool isHolding_ = false;
};

} // namespace tarnwick
