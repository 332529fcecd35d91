#include "app/Watch/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace tarnwick {

namespace {

/// A line of the terminal program fits without growing.
constexpr std::size_t usualSize = 1024;

bool needsNoEscape(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

/// With quotation marks. Few texts need the library, which escapes and checks the encoding.
void appendString(std::string& text, std::string_view value) {
    using Json = nlohmann::json;
    if (needsNoEscape(value)) {
        text.append(1, '"').append(value).append(1, '"');
    } else {
        text.append(Json(value).dump(-1, ' ', false, Json::error_handler_t::replace));
    }
}

} // namespace

JsonText::JsonText() {
    text_.reserve(usualSize);
    text_ += '{';
}

void JsonText::add(std::string_view key, std::string_view value) {
    addKey(key);
    appendString(text_, value);
}

void JsonText::add(std::string_view key, bool value) {
    addKey(key);
    text_ += value ? "true" : "false";
}

void JsonText::add(std::string_view key, double value) {
    if (!std::isfinite(value)) {
        addNull(key);
        return;
    }
    addKey(key);
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    const std::string_view number(digits.data(), written.ptr);
    text_ += number;
    if (number.find_first_of(".e") == std::string_view::npos) {
        text_ += ".0";
    }
}

void JsonText::addNull(std::string_view key) {
    addKey(key);
    text_ += "null";
}

void JsonText::add(std::string_view key, const std::vector<std::string>& values) {
    addKey(key);
    text_ += '[';
    for (std::size_t place = 0; place < values.size(); ++place) {
        text_ += place > 0 ? "," : "";
        appendString(text_, values[place]);
    }
    text_ += ']';
}

void JsonText::beginObject(std::string_view key) {
    addKey(key);
    text_ += '{';
}

void JsonText::endObject() {
    text_ += '}';
}

void JsonText::beginList(std::string_view key) {
    addKey(key);
    text_ += '[';
}

void JsonText::beginItem() {
    text_ += text_.back() == '[' ? "{" : ",{";
}

void JsonText::endList() {
    text_ += ']';
}

std::string JsonText::take() {
    text_ += '}';
    return std::move(text_);
}

void JsonText::addKey(std::string_view key) {
    if (text_.back() != '{') {
        text_ += ',';
    }
    text_.append(1, '"').append(key).append("\":");
}

void JsonText::addInteger(std::string_view key, long long value) {
    addKey(key);
    std::array<char, 24> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    text_.append(digits.data(), written.ptr);
}

} // namespace tarnwick
