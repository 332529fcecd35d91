#include "core/MenuBarTitle.h"

#include "core/Text.h"

#include <algorithm>
#include <cmath>

namespace tarnwick::MenuBarTitle {

namespace {

/// Longer round trips are shown in seconds.
bool isInMilliseconds(double ms) {
    return std::round(ms) <= 99;
}

} // namespace

std::string_view rawValue(LossMode mode) {
    switch (mode) {
    case LossMode::off:
        return "off";
    case LossMode::whenLossy:
        return "whenLossy";
    case LossMode::always:
        break;
    }
    return "always";
}

std::optional<LossMode> lossMode(std::string_view text) {
    for (const LossMode mode : allLossModes) {
        if (rawValue(mode) == text) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string ping(double ms) {
    return isInMilliseconds(ms) ? figure(ms) + "ms" : figure(ms);
}

std::string figure(double ms) {
    if (isInMilliseconds(ms)) {
        return Text::whole(std::max(ms, 0.0));
    }
    const int tenths = static_cast<int>(std::clamp(std::round(ms / 100), 1.0, 99.0));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + "s";
}

int displayedLoss(double percent) {
    return percent >= 0 ? static_cast<int>(std::round(std::min(percent, 99.0))) : 0;
}

std::string lossSuffix(double percent) {
    return " (" + std::to_string(displayedLoss(percent)) + "%)";
}

std::string title(double pingMs, std::optional<double> lossPercent) {
    return ping(pingMs) + (lossPercent ? lossSuffix(*lossPercent) : std::string());
}

bool showsLoss(LossMode mode, bool gateOpen) {
    switch (mode) {
    case LossMode::off:
        return false;
    case LossMode::whenLossy:
        return gateOpen;
    case LossMode::always:
        break;
    }
    return true;
}

std::vector<std::string> widestCandidates(std::optional<int> lossDigits) {
    std::string suffix;
    if (lossDigits) {
        const auto digits = static_cast<std::size_t>(std::clamp(*lossDigits, 1, 2));
        suffix = " (" + std::string(digits, '8') + "%)";
    }
    return {"88ms" + suffix, "8.8s" + suffix, std::string(failed), std::string(waiting)};
}

bool HoldGate::update(bool active, double now) {
    if (active) {
        lastActiveAt_ = now;
    } else if (lastActiveAt_ && now - *lastActiveAt_ >= holdSeconds_) {
        lastActiveAt_.reset();
    }
    return isOpen();
}

} // namespace tarnwick::MenuBarTitle
