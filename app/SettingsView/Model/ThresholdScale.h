// The scale on which the slow-ping threshold is set: logarithmic, from 50 to 2000 ms.
#pragma once

namespace tarnwick::ThresholdScale {

inline constexpr double lowestMs = 50;
inline constexpr double highestMs = 2000;
/// Thresholds are set in multiples of it.
inline constexpr double stepMs = 10;

/// The threshold's place: its natural logarithm, that of the nearer end when it is outside the scale.
[[nodiscard]] double place(double ms);

/// The threshold at a place: the nearest step, inside the scale.
[[nodiscard]] double thresholdAt(double place);

/// So many steps up, or down when negative; from between two steps the first one is shorter.
[[nodiscard]] double stepped(double ms, int steps);

/// The same scale in so many equal parts, each finer than any step is: 0 is its lowest end.
inline constexpr int positions = 4000;

[[nodiscard]] int positionOf(double ms);
[[nodiscard]] double thresholdAtPosition(int position);

} // namespace tarnwick::ThresholdScale
