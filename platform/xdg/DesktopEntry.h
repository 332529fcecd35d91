// The text of a desktop entry: one group of keys, changed without touching anything else in the file.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

/// Comments, other groups, localized and unknown keys and their order stay as they are. A value.
class DesktopEntry {
public:
    /// Without any key.
    DesktopEntry() : lines_{"[Desktop Entry]"} {}

    /// Nothing when the text is no desktop entry: then desktops do not read it either.
    [[nodiscard]] static std::optional<DesktopEntry> parse(std::string_view text);

    [[nodiscard]] std::string text() const;

    /// Absent also when it is written in a way that nobody can read. Where a key stands twice, the last one
    /// holds.
    [[nodiscard]] std::optional<std::string> value(std::string_view key) const;
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
    /// The parts between semicolons that are not escaped; empty ones are left out.
    [[nodiscard]] std::optional<std::vector<std::string>> list(std::string_view key) const;

    void set(std::string_view key, std::string_view value);
    void setBoolean(std::string_view key, bool value);
    void setList(std::string_view key, const std::vector<std::string>& parts);
    void remove(std::string_view key);

    friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;

private:
    /// Of the group's lines: the first, and the one behind the last.
    [[nodiscard]] std::pair<std::size_t, std::size_t> range() const;
    [[nodiscard]] std::optional<std::string> rawValue(std::string_view key) const;
    void setRaw(std::string_view key, const std::string& raw);

    std::vector<std::string> lines_;
};

} // namespace tarnwick
