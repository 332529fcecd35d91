// The text of a desktop entry. Changing a key of its main group leaves the rest of the text alone.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

/// Comments, other groups, localized and unknown keys, and their order stay. A value type.
class DesktopEntry {
public:
    /// Has no keys.
    DesktopEntry() : lines_{"[Desktop Entry]"} {}

    /// Nothing when the text is no desktop entry.
    [[nodiscard]] static std::optional<DesktopEntry> parse(std::string_view text);

    [[nodiscard]] std::string text() const;

    /// Absent also when it has an unknown escape. Of a key that stands twice, the last one counts.
    [[nodiscard]] std::optional<std::string> value(std::string_view key) const;
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
    /// The parts between semicolons, such as names of desktops.
    [[nodiscard]] std::optional<std::vector<std::string>> list(std::string_view key) const;

    void set(std::string_view key, std::string_view value);
    void setBoolean(std::string_view key, bool value);
    void remove(std::string_view key);
    /// Replaces the key's value in every group, also in those of actions. A value with an unknown escape
    /// stays.
    void changeEverywhere(
        std::string_view key, const std::function<std::string(const std::string&)>& changed);

    friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;

private:
    /// The lines of the main group, without its header: first and end.
    [[nodiscard]] std::pair<std::size_t, std::size_t> range() const;
    [[nodiscard]] std::optional<std::string> rawValue(std::string_view key) const;
    void setRaw(std::string_view key, const std::string& raw);

    std::vector<std::string> lines_;
};

} // namespace tarnwick
