// Reads the members of a JSON document that must be as it is meant to be, or is refused as a whole.
#pragma once

#include "core/Storage/JsonObject.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace tarnwick {

/// For whoever made the document: "releases[0].notes must be a text".
struct DocumentMistake {
    std::string text;

    friend bool operator==(const DocumentMistake&, const DocumentMistake&) = default;
};

/// The object in `text`. A text of more than `longest` bytes, one that is no JSON object, and an object that
/// has a member twice is a mistake; in an object inside it the last of two counts.
[[nodiscard]] std::variant<nlohmann::json, DocumentMistake> readDocument(
    const std::string& text, std::size_t longest);

/// The members of one object. Each question that a member does not answer as it should is a mistake, of which
/// the first is kept; then the answer is an empty value. Members that nobody asks for are left to later
/// versions. The object and the mistake outlive this.
class DocumentReader {
public:
    /// `place` is where the object lies: empty, or as "releases[0]".
    DocumentReader(const nlohmann::json& object, std::string place, std::optional<DocumentMistake>& mistake);

    [[nodiscard]] bool has(const char* key) const;

    /// Up to `longest` bytes; may be empty.
    [[nodiscard]] std::string text(const char* key, std::size_t longest);

    /// A whole number.
    [[nodiscard]] std::uint64_t number(const char* key, std::uint64_t least, std::uint64_t most);

    /// One to `most` elements, or none.
    [[nodiscard]] const nlohmann::json::array_t& list(const char* key, std::size_t most);

    /// What `parse` makes of a text; it gives an optional. `must` completes "PLACE must be ...".
    template<class Parse>
    [[nodiscard]] auto parsed(const char* key, Parse parse, std::string_view must) {
        auto value = parse(text(key, longestParsed));
        if (!value) {
            complain(key, must);
        }
        using Parsed = typename std::remove_cvref_t<decltype(value)>::value_type;
        return value ? std::move(*value) : Parsed{};
    }

    void complain(const char* key, std::string_view must);

    /// "releases[0].archives[1]".
    [[nodiscard]] std::string placeOf(const char* key, std::size_t index) const;

private:
    static constexpr std::size_t longestParsed = 4096;

    [[nodiscard]] std::string placeOf(const char* key) const;
    [[nodiscard]] const nlohmann::json* find(const char* key) const;

    const nlohmann::json& object_;
    std::string place_;
    std::optional<DocumentMistake>& mistake_;
};

/// Keeps the first mistake.
void complainOf(std::optional<DocumentMistake>& mistake, const std::string& place, std::string_view must);

/// A word as the documents have them for channels and machines: up to 32 ASCII letters, digits, dots, dashes
/// and underscores.
[[nodiscard]] std::optional<std::string> parseWord(const std::string& text);

} // namespace tarnwick
