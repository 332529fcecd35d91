// Writes a JSON object straight into text, without building a tree of values first.
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// An object that grows member by member, in the order of the calls. Keys are plain ASCII and go in as they
/// are.
class JsonText {
public:
    JsonText();

    /// Invalid UTF-8 is replaced by U+FFFD.
    void add(std::string_view key, std::string_view value);

    void add(std::string_view key, const char* value) { add(key, std::string_view(value)); }

    void add(std::string_view key, bool value);
    /// A number with a point or an exponent, the shortest that reads back as the same; null unless finite.
    void add(std::string_view key, double value);
    void addNull(std::string_view key);
    /// A list.
    void add(std::string_view key, const std::vector<std::string>& values);

    template<std::integral Integer>
    void add(std::string_view key, Integer value) {
        addInteger(key, static_cast<long long>(value));
    }

    template<class Value>
    void add(std::string_view key, const std::optional<Value>& value) {
        if (value) {
            add(key, *value);
        } else {
            addNull(key);
        }
    }

    /// The members that follow belong to an object inside, until its end.
    void beginObject(std::string_view key);
    void endObject();

    /// The objects that follow are in a list, until its end.
    void beginList(std::string_view key);
    void beginItem();
    void endList();

    /// The whole object. Nothing can be added after it.
    [[nodiscard]] std::string take();

private:
    void addKey(std::string_view key);
    void addInteger(std::string_view key, long long value);

    std::string text_;
};

} // namespace tarnwick
