// How long pinging may pause when the user wants it to, in whole seconds.
#pragma once

namespace tarnwick::PauseLength {

inline constexpr int shortest = 1;
inline constexpr int longest = 86'400;
inline constexpr int usual = 3600; ///< where the user names none

[[nodiscard]] constexpr bool admits(int seconds) {
    return seconds >= shortest && seconds <= longest;
}

} // namespace tarnwick::PauseLength
