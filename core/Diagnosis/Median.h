// The middle of some values.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

namespace tarnwick {

/// The upper one of an even number; nothing without values.
[[nodiscard]] inline std::optional<double> medianOf(std::vector<double> values) {
    if (values.empty()) {
        return std::nullopt;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

} // namespace tarnwick
