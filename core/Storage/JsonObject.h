// Reads a JSON object that anybody may have written.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace tarnwick {

/// Nothing when the text is no JSON object, or is nested so deep that working on it could exhaust the stack.
[[nodiscard]] std::optional<nlohmann::json> parseJsonObject(const std::string& text);

} // namespace tarnwick
