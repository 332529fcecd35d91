#include "core/Update/DocumentReader.h"

#include <algorithm>

namespace tarnwick {

namespace {

bool mayBeInWord(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z')
           || (letter >= '0' && letter <= '9') || letter == '.' || letter == '-' || letter == '_';
}

} // namespace

void complainOf(std::optional<DocumentMistake>& mistake, const std::string& place, std::string_view must) {
    if (!mistake) {
        mistake = {place + " must be " + std::string(must)};
    }
}

std::optional<std::string> parseWord(const std::string& text) {
    constexpr std::size_t longestWord = 32;
    const bool isWord = !text.empty() && text.size() <= longestWord && std::ranges::all_of(text, mayBeInWord);
    return isWord ? std::optional(text) : std::nullopt;
}

std::variant<nlohmann::json, DocumentMistake> readDocument(const std::string& text, std::size_t longest) {
    if (text.size() > longest) {
        return DocumentMistake{"it has more than " + std::to_string(longest) + " bytes"};
    }
    JsonReading reading = readJsonObject(text);
    if (reading.mistake) {
        return DocumentMistake{
            "line " + std::to_string(reading.mistake->line) + ": " + reading.mistake->text};
    }
    if (!reading.repeated.empty()) {
        return DocumentMistake{*reading.repeated.begin() + " is there twice"};
    }
    return std::move(reading.object);
}

DocumentReader::DocumentReader(
    const nlohmann::json& object, std::string place, std::optional<DocumentMistake>& mistake)
    : object_(object), place_(std::move(place)), mistake_(mistake) {
    if (!object.is_object()) {
        complainOf(mistake_, place_, "an object");
    }
}

const nlohmann::json* DocumentReader::find(const char* key) const {
    const auto found = object_.find(key); // the end where this is no object
    return found != object_.end() ? &*found : nullptr;
}

bool DocumentReader::has(const char* key) const {
    return find(key) != nullptr;
}

std::string DocumentReader::placeOf(const char* key) const {
    return place_.empty() ? key : place_ + '.' + key;
}

std::string DocumentReader::placeOf(const char* key, std::size_t index) const {
    return placeOf(key) + '[' + std::to_string(index) + ']';
}

void DocumentReader::complain(const char* key, std::string_view must) {
    complainOf(mistake_, placeOf(key), must);
}

std::string DocumentReader::text(const char* key, std::size_t longest) {
    const nlohmann::json* const found = find(key);
    const std::string* const text = found != nullptr ? found->get_ptr<const std::string*>() : nullptr;
    if (text == nullptr || text->size() > longest) {
        complain(key, "a text of up to " + std::to_string(longest) + " bytes");
        return {};
    }
    return *text;
}

std::uint64_t DocumentReader::number(const char* key, std::uint64_t least, std::uint64_t most) {
    const nlohmann::json* const found = find(key);
    const auto* const number =
        found != nullptr ? found->get_ptr<const nlohmann::json::number_unsigned_t*>() : nullptr;
    if (number == nullptr || *number < least || *number > most) {
        complain(key, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
        return {};
    }
    return *number;
}

const nlohmann::json::array_t& DocumentReader::list(const char* key, std::size_t most) {
    static const nlohmann::json::array_t none;
    const nlohmann::json* const found = find(key);
    const auto* const list = found != nullptr ? found->get_ptr<const nlohmann::json::array_t*>() : nullptr;
    if (list == nullptr || list->empty() || list->size() > most) {
        complain(key, "a list of 1 to " + std::to_string(most) + " elements");
        return none;
    }
    return *list;
}

} // namespace tarnwick
