#include "app/SettingsView/Model/ThresholdScale.h"

#include <algorithm>
#include <cmath>

namespace tarnwick::ThresholdScale {

namespace {

double length() {
    return std::log(highestMs) - std::log(lowestMs);
}

} // namespace

double place(double ms) {
    // Not-a-number gives the lowest end.
    return std::log(std::min(std::fmax(ms, lowestMs), highestMs));
}

double thresholdAt(double place) {
    return std::clamp(std::round(std::exp(place) / stepMs) * stepMs, lowestMs, highestMs);
}

double stepped(double ms, int steps) {
    const double begin = std::exp(place(ms)) / stepMs;
    // Logarithm and inverse round in the last digits.
    const double nearest = std::round(begin);
    const bool isOnStep = std::abs(begin - nearest) < 1e-6;
    const double between = steps > 0 ? std::floor(begin) : std::ceil(begin);
    const double whole = isOnStep ? nearest : between;
    return std::clamp((whole + steps) * stepMs, lowestMs, highestMs);
}

int positionOf(double ms) {
    return static_cast<int>(std::lround((place(ms) - std::log(lowestMs)) / length() * positions));
}

double thresholdAtPosition(int position) {
    return thresholdAt(std::log(lowestMs) + length() * position / positions);
}

} // namespace tarnwick::ThresholdScale
