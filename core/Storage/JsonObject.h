// Reads a JSON object from a text that can't be trusted.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace tarnwick {

/// None when the text is no JSON object, or is nested too deep for the stack.
[[nodiscard]] std::optional<nlohmann::json> parseJsonObject(const std::string& text);

} // namespace tarnwick
