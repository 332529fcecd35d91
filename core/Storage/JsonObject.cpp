#include "core/Storage/JsonObject.h"

#include <utility>

namespace tarnwick {

namespace {

/// Settings and statistics need far less. The library copies and writes values recursively.
constexpr int deepestNesting = 100;

} // namespace

std::optional<nlohmann::json> parseJsonObject(const std::string& text) {
    using Json = nlohmann::json;
    bool isTooDeep = false;
    const auto watchDepth = [&isTooDeep](int depth, Json::parse_event_t /*event*/, Json& /*value*/) {
        isTooDeep = isTooDeep || depth > deepestNesting;
        return !isTooDeep;
    };
    Json value = Json::parse(text, watchDepth, /*allow_exceptions=*/false);
    if (isTooDeep || !value.is_object()) {
        return std::nullopt;
    }
    return value;
}

} // namespace tarnwick
