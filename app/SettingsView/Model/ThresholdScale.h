// The scale of the slow-ping threshold: logarithmic, from 50 to 2000 ms.
#pragma once

namespace tarnwick::ThresholdScale {

inline constexpr double lowestMs = 50;
inline constexpr double highestMs = 2000;
/// Thresholds are multiples of this.
inline constexpr double stepMs = 10;

/// The natural logarithm of the threshold, limited to the scale.
[[nodiscard]] double place(double ms);

/// The threshold at a place, rounded to the nearest step and limited to the scale.
[[nodiscard]] double thresholdAt(double place);

/// The threshold a number of steps higher, or lower if negative. From between two multiples, the first step
/// goes to the nearest one in that direction.
[[nodiscard]] double stepped(double ms, int steps);

/// Parts of equal length on the logarithmic scale, each smaller than a step. Position 0 is the lowest end.
inline constexpr int positions = 4000;

[[nodiscard]] int positionOf(double ms);
[[nodiscard]] double thresholdAtPosition(int position);

} // namespace tarnwick::ThresholdScale
