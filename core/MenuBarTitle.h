// The short text beside the signal bars:
// the latest round-trip time and, if wanted, the loss.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::MenuBarTitle {

/// When the loss is shown beside the latency.
enum class LossMode { off, whenLossy, always };

inline constexpr std::array allLossModes{LossMode::off, LossMode::whenLossy, LossMode::always};

/// The stored text of a mode, and back. No mode for any other text; case matters.
[[nodiscard]] std::string_view rawValue(LossMode mode);
[[nodiscard]] std::optional<LossMode> lossMode(std::string_view text);

inline constexpr std::string_view waiting = "…";     ///< no latency is known yet
inline constexpr std::string_view failed = "Failed"; ///< the connection is down
inline constexpr std::string_view paused = "Paused"; ///< nothing is pinged
/// The same in the place of a figure: two letters that look like the sign and are as high as digits.
inline constexpr std::string_view pauseSign = "II";

/// "42ms" up to 99 ms, then tenths of a second up to "9.9s": four characters at most.
[[nodiscard]] std::string ping(double ms);
/// The same without "ms": "42", "1.2s".
[[nodiscard]] std::string figure(double ms);
/// The percentage as shown: a whole number from 0 to 99, so two digits at most.
[[nodiscard]] int displayedLoss(double percent);
/// " (3%)"
[[nodiscard]] std::string lossSuffix(double percent);
[[nodiscard]] std::string title(double pingMs, std::optional<double> lossPercent);
[[nodiscard]] bool showsLoss(LossMode mode, bool gateOpen);
/// The texts to measure for the widest title: with one or two digits of loss, or without loss.
[[nodiscard]] std::vector<std::string> widestCandidates(std::optional<int> lossDigits);

/// Opens at once and closes `holdSeconds` after it was last active.
/// Times are monotonic seconds.
class HoldGate {
public:
    explicit HoldGate(double holdSeconds) : holdSeconds_(holdSeconds) {}

    /// Keeps showing the loss for a while after it has ended.
    [[nodiscard]] static HoldGate lossSuffix() { return HoldGate(10); }

    /// Keeps room for a second digit of loss for a while after its last use.
    [[nodiscard]] static HoldGate twoDigitLoss() { return HoldGate(30); }

    /// Returns whether the gate is open now.
    bool update(bool active, double now);

    [[nodiscard]] bool isOpen() const { return lastActiveAt_.has_value(); }

private:
    double holdSeconds_;
    std::optional<double> lastActiveAt_; ///< only while it is open
};

} // namespace tarnwick::MenuBarTitle
