// The user's stored settings by key, with registered defaults below them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

/// Values keep their type: a boolean is no number, and a number is no text. A stored value of another type
/// than the one asked for reads as if it were absent. Main thread.
class UserDefaults {
public:
    using Value = std::variant<bool, double, std::string>;
    using Table = std::map<std::string, Value>;

    UserDefaults() = default;
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    virtual ~UserDefaults() = default;

    /// The values of keys that are not stored, added to those registered before. They are never stored
    /// themselves.
    virtual void registerDefaults(const Table& defaults) = 0;

    [[nodiscard]] virtual std::optional<bool> boolean(const std::string& key) const = 0;
    [[nodiscard]] virtual std::optional<double> number(const std::string& key) const = 0;
    [[nodiscard]] virtual std::optional<std::string> text(const std::string& key) const = 0;

    /// Read back at once, stored soon. A failure to store is not reported, and the value holds for this run.
    virtual void set(const std::string& key, const Value& value) = 0;
    virtual void remove(const std::string& key) = 0;

    /// Stores now what is not stored yet.
    virtual void flush() = 0;
};

} // namespace tarnwick
