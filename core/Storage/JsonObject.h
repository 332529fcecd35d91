// Reads a JSON object from a text that can't be trusted.
#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <optional>
#include <set>
#include <string>

namespace tarnwick {

/// Lines count from 1.
struct JsonMistake {
    int line = 1;
    std::string text;
};

struct JsonReading {
    nlohmann::json object = nlohmann::json::object(); ///< the part before the mistake, if there is one
    std::map<std::string, int> lines{};               ///< of the keys of `object`, the last one of each
    std::set<std::string> repeated{};                 ///< keys of `object` that are there more than once
    std::optional<JsonMistake> mistake{};
};

/// A text that is no JSON object, or is nested too deep for the stack, is a mistake. In linear time.
[[nodiscard]] JsonReading readJsonObject(const std::string& text);

/// The same of a text that a person wrote: of one with mistakes, `object` has every member that can be read,
/// also behind them, and `mistake` is the first.
[[nodiscard]] JsonReading salvageJsonObject(const std::string& text);

/// None when there is a mistake.
[[nodiscard]] std::optional<nlohmann::json> parseJsonObject(const std::string& text);

} // namespace tarnwick
