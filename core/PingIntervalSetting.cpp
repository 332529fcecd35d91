#include "core/PingIntervalSetting.h"

#include "core/Text.h"

#include <algorithm>
#include <cmath>

namespace tarnwick::PingIntervalSetting {

int clamped(double seconds) {
    if (std::isnan(seconds)) {
        return range.lowest;
    }
    // Limited before the conversion: a larger number would not fit into the integer.
    const double limited = std::clamp(
        std::round(seconds), static_cast<double>(range.lowest), static_cast<double>(range.highest));
    return static_cast<int>(limited);
}

std::optional<int> parse(std::string_view text) {
    const std::optional<double> number = Text::parseNumber(Text::trimmed(text));
    if (!number) {
        return std::nullopt;
    }
    return clamped(*number);
}

} // namespace tarnwick::PingIntervalSetting
