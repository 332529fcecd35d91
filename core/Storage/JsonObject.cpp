#include "core/Storage/JsonObject.h"

#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

/// Settings and statistics need far less. The library copies and writes values recursively.
constexpr std::size_t deepestNesting = 100;

/// Walks over a text and counts its lines.
class LineCounting {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCounting(const char* at, int* line) : at_(at), line_(line) {}

    reference operator*() const { return *at_; }

    LineCounting& operator++() {
        *line_ += *at_ == '\n' ? 1 : 0;
        ++at_;
        return *this;
    }

    friend bool operator==(const LineCounting& left, const LineCounting& right) {
        return left.at_ == right.at_;
    }

private:
    const char* at_;
    int* line_;
};

/// What follows the place in the library's message: "unexpected '}'; expected string literal".
std::string reasonIn(const std::string& message) {
    constexpr std::string_view separator = " - ";
    const std::size_t found = message.find(separator);
    return found != std::string::npos ? message.substr(found + separator.size()) : message;
}

/// Builds the object while the library reads the text. Each value is placed once: the library's own reader
/// with a callback searches all earlier members of an object whenever one of them ends.
class ObjectReader {
public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    explicit ObjectReader(const int& line) : line_(line) {}

    [[nodiscard]] JsonReading take() {
        if (!reading_.mistake && !root_.is_object()) {
            reading_.mistake = {.line = 1, .text = "it must be one JSON object: { ... }"};
        }
        if (root_.is_object()) {
            reading_.object = std::move(root_);
        }
        return std::move(reading_);
    }

    // What the library calls. False ends the reading.

    bool null() { return place(nullptr) != nullptr; }

    bool boolean(bool value) { return place(value) != nullptr; }

    bool number_integer(number_integer_t value) { return place(value) != nullptr; }

    bool number_unsigned(number_unsigned_t value) { return place(value) != nullptr; }

    bool number_float(number_float_t value, const string_t& /*text*/) { return place(value) != nullptr; }

    bool string(string_t& value) { return place(std::move(value)) != nullptr; }

    bool binary(binary_t& /*value*/) { return false; }

    bool start_object(std::size_t /*size*/) { return open(Json::object()); }

    bool start_array(std::size_t /*size*/) { return open(Json::array()); }

    bool end_object() { return close(); }

    bool end_array() { return close(); }

    bool key(string_t& name) {
        if (open_.size() == 1) {
            reading_.lines[name] = line_;
        }
        key_ = std::move(name);
        return true;
    }

    bool parse_error(
        std::size_t /*position*/, const std::string& /*token*/, const nlohmann::detail::exception& error) {
        reading_.mistake = {.line = line_, .text = reasonIn(error.what())};
        return false;
    }

private:
    template<class Value>
    Json* place(Value&& value) {
        if (open_.empty()) {
            root_ = std::forward<Value>(value);
            return &root_;
        }
        Json& holder = *open_.back();
        if (holder.is_array()) {
            return &holder.emplace_back(std::forward<Value>(value));
        }
        Json& member = holder[key_];
        member = std::forward<Value>(value);
        return &member;
    }

    bool open(Json container) {
        if (open_.size() > deepestNesting) {
            reading_.mistake = {.line = line_, .text = "it is nested too deep"};
            return false;
        }
        open_.push_back(place(std::move(container)));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    const int& line_;
    Json root_;
    std::vector<Json*> open_; ///< the objects and arrays around the next value
    std::string key_;
    JsonReading reading_;
};

} // namespace

JsonReading readJsonObject(const std::string& text) {
    // The versions of the library call an empty text by different names.
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        return {.mistake = JsonMistake{.line = 1, .text = "it is empty"}};
    }
    int line = 1;
    ObjectReader reader(line);
    const char* const end = text.data() + text.size();
    Json::sax_parse(LineCounting(text.data(), &line), LineCounting(end, &line), &reader);
    return reader.take();
}

std::optional<Json> parseJsonObject(const std::string& text) {
    JsonReading reading = readJsonObject(text);
    return reading.mistake ? std::nullopt : std::optional(std::move(reading.object));
}

} // namespace tarnwick
