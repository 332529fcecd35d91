#include "core/Storage/JsonObject.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

/// Settings and statistics need far less. The library copies and writes values recursively.
constexpr std::size_t deepestNesting = 100;

/// How far a text has been read.
struct Place {
    const char* at = nullptr;
    int line = 1;
};

/// Walks over a text for the library, which passes it on by value.
class PlaceCounting {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    PlaceCounting(const char* at, Place* place) : at_(at), place_(place) {}

    reference operator*() const { return *at_; }

    PlaceCounting& operator++() {
        place_->line += *at_ == '\n' ? 1 : 0;
        place_->at = ++at_;
        return *this;
    }

    friend bool operator==(const PlaceCounting& left, const PlaceCounting& right) {
        return left.at_ == right.at_;
    }

private:
    const char* at_;
    Place* place_;
};

bool startsComment(std::string_view text) {
    return text.starts_with('#') || text.starts_with("//") || text.starts_with("/*");
}

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

    /// `place` is where the library reads `text`, which both outlive it. `depth` objects and lists lie around
    /// the text.
    ObjectReader(std::string_view text, const Place& place, std::size_t depth = 0)
        : text_(text), place_(place), depth_(depth) {}

    [[nodiscard]] Json& value() { return root_; }

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
            if (!reading_.lines.insert_or_assign(name, place_.line).second) {
                reading_.repeated.insert(name);
            }
        }
        key_ = std::move(name);
        return true;
    }

    bool parse_error(
        std::size_t position, const std::string& token, const nlohmann::detail::exception& error) {
        constexpr int numberOverflow = 406;
        std::string text = reasonIn(error.what());
        if (error.id == numberOverflow) {
            text = "the number " + token + " is too large";
        } else if (position > 0 && position <= text_.size() && startsComment(text_.substr(position - 1))) {
            text = "JSON has no comments";
        }
        // A text that its line ends: the mistake is in that line.
        const bool isAtLineEnd = position > 0 && position <= text_.size() && text_[position - 1] == '\n';
        reading_.mistake = {.line = place_.line - (isAtLineEnd ? 1 : 0), .text = std::move(text)};
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
        if (depth_ + open_.size() > deepestNesting) {
            reading_.mistake = {.line = place_.line, .text = "it is nested too deep"};
            return false;
        }
        open_.push_back(place(std::move(container)));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    std::string_view text_;
    const Place& place_;
    std::size_t depth_;
    Json root_;
    std::vector<Json*> open_; ///< the objects and arrays around the next value
    std::string key_;
    JsonReading reading_;
};

/// Finds the members of an object whatever stands between them: each text before a colon, outside comments,
/// is a key.
class MemberSearch {
public:
    explicit MemberSearch(std::string_view text) : rest_(text) {}

    void addTo(JsonReading& reading) {
        while (!rest_.empty() && unreadable_ < mostUnreadable) {
            if (startsComment(rest_)) {
                skip(std::min(rest_.find(rest_.starts_with("/*") ? "*/" : "\n"), rest_.size()));
            } else if (!rest_.starts_with('"')) {
                skip(1);
            } else if (const std::size_t length = lengthOfText()) {
                takeMember(length, reading);
            } else {
                // Looked for again from each quote in it, the end would take quadratic time.
                skip(std::min(rest_.find('\n'), rest_.size()));
            }
        }
    }

private:
    /// Values that can't be read are given up after this many: each may take reading to the end of the text.
    static constexpr int mostUnreadable = 100;

    void skip(std::size_t letters) {
        line_ += static_cast<int>(std::ranges::count(rest_.substr(0, letters), '\n'));
        rest_.remove_prefix(letters);
    }

    /// Of the text that begins here, with its quotes; zero when it does not end in this line.
    [[nodiscard]] std::size_t lengthOfText() const {
        for (std::size_t at = 1; at < rest_.size() && rest_[at] != '\n'; ++at) {
            if (rest_[at] == '\\') {
                ++at;
            } else if (rest_[at] == '"') {
                return at + 1;
            }
        }
        return 0;
    }

    /// Takes the member whose key is the text of this length, if a colon follows it.
    void takeMember(std::size_t length, JsonReading& reading) {
        const Json key = Json::parse(rest_.substr(0, length), nullptr, false);
        const int line = line_;
        skip(length);
        const std::size_t colon = rest_.find_first_not_of(" \t\r\n");
        if (!key.is_string() || colon == std::string_view::npos || rest_[colon] != ':') {
            return;
        }
        skip(colon + 1);
        if (auto value = takeValue()) {
            const auto& name = key.get_ref<const std::string&>();
            if (!reading.lines.insert_or_assign(name, line).second) {
                reading.repeated.insert(name);
            }
            reading.object[name] = std::move(*value);
        } else {
            ++unreadable_;
        }
    }

    [[nodiscard]] std::optional<Json> takeValue() {
        const char* const begin = rest_.begin();
        Place place{begin, line_};
        ObjectReader reader(rest_, place, 1);
        const PlaceCounting end(rest_.end(), &place);
        // Whatever follows the value, and comments in it, do not matter.
        if (!Json::sax_parse(
                PlaceCounting(begin, &place), end, &reader, Json::input_format_t::json, false, true)) {
            return std::nullopt;
        }
        const auto length = static_cast<std::size_t>(place.at - begin);
        const std::size_t next = rest_.find_first_not_of(" \t\r\n", length);
        if (reader.value().is_string() && next != std::string_view::npos && rest_[next] == ':') {
            return std::nullopt; // no value, but the next key
        }
        skip(length);
        return std::move(reader.value());
    }

    std::string_view rest_;
    int line_ = 1;
    int unreadable_ = 0;
};

} // namespace

JsonReading readJsonObject(const std::string& text) {
    // The versions of the library call an empty text by different names.
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        return {.mistake = JsonMistake{.line = 1, .text = "it is empty"}};
    }
    Place place{text.data()};
    ObjectReader reader(text, place);
    Json::sax_parse(
        PlaceCounting(text.data(), &place), PlaceCounting(text.data() + text.size(), &place), &reader);
    return reader.take();
}

JsonReading salvageJsonObject(const std::string& text) {
    JsonReading reading = readJsonObject(text);
    if (reading.mistake) {
        reading = {.mistake = std::move(reading.mistake)};
        MemberSearch(text).addTo(reading);
    }
    return reading;
}

std::optional<Json> parseJsonObject(const std::string& text) {
    JsonReading reading = readJsonObject(text);
    return reading.mistake ? std::nullopt : std::optional(std::move(reading.object));
}

} // namespace tarnwick
