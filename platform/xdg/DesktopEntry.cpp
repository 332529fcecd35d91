#include "platform/xdg/DesktopEntry.h"

#include "core/Text.h"

#include <algorithm>
#include <sstream>

namespace tarnwick {

namespace {

constexpr std::string_view mainGroup = "[Desktop Entry]";

bool isGroup(std::string_view line) {
    return line.starts_with('[') && Text::trimmed(line).ends_with(']');
}

bool isRemark(std::string_view line) {
    return line.starts_with('#') || Text::trimmed(line).empty();
}

/// Empty when the line is no "key=value".
std::string_view keyOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    const bool isSetting = equals != std::string_view::npos && !isRemark(line) && !isGroup(line);
    return isSetting ? Text::trimmed(line.substr(0, equals)) : std::string_view();
}

/// Of a line with a key.
std::string_view rawValueIn(std::string_view line) {
    return Text::trimmed(line.substr(line.find('=') + 1));
}

std::string escaped(std::string_view value) {
    std::string raw;
    for (const char letter : value) {
        switch (letter) {
        case '\\':
            raw += "\\\\";
            break;
        case '\n':
            raw += "\\n";
            break;
        case '\t':
            raw += "\\t";
            break;
        case '\r':
            raw += "\\r";
            break;
        default:
            raw += letter;
        }
    }
    return raw.starts_with(' ') ? "\\s" + raw.substr(1) : raw;
}

std::optional<char> escapedLetter(char code) {
    switch (code) {
    case '\\':
    case ';':
        return code;
    case 's':
        return ' ';
    case 'n':
        return '\n';
    case 't':
        return '\t';
    case 'r':
        return '\r';
    default:
        return std::nullopt;
    }
}

std::optional<std::string> unescaped(std::string_view raw) {
    std::string value;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '\\') {
            value += raw[at];
            continue;
        }
        const auto letter = ++at < raw.size() ? escapedLetter(raw[at]) : std::nullopt;
        if (!letter) {
            return std::nullopt;
        }
        value += *letter;
    }
    return value;
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text) {
    DesktopEntry entry;
    entry.lines_.clear();
    bool isInGroup = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (isGroup(line)) {
            if (!isInGroup && Text::trimmed(line) != mainGroup) {
                return std::nullopt;
            }
            isInGroup = true;
        } else if (!isRemark(line) && (!isInGroup || keyOf(line).empty())) {
            return std::nullopt;
        }
        entry.lines_.emplace_back(line);
    }
    return isInGroup ? std::optional(entry) : std::nullopt;
}

std::string DesktopEntry::text() const {
    std::string text;
    for (const std::string& line : lines_) {
        text += line;
        text += '\n';
    }
    return text;
}

std::pair<std::size_t, std::size_t> DesktopEntry::range() const {
    const auto header = std::ranges::find_if(lines_, isGroup);
    const auto next = std::find_if(header + 1, lines_.end(), isGroup);
    return {
        static_cast<std::size_t>(header + 1 - lines_.begin()),
        static_cast<std::size_t>(next - lines_.begin())};
}

std::optional<std::string> DesktopEntry::rawValue(std::string_view key) const {
    const auto [first, end] = range();
    for (std::size_t at = end; at-- > first;) {
        if (keyOf(lines_[at]) == key) {
            return std::string(rawValueIn(lines_[at]));
        }
    }
    return std::nullopt;
}

std::optional<std::string> DesktopEntry::value(std::string_view key) const {
    const auto raw = rawValue(key);
    return raw ? unescaped(*raw) : std::nullopt;
}

std::optional<bool> DesktopEntry::boolean(std::string_view key) const {
    const auto raw = rawValue(key);
    if (raw == "true") {
        return true;
    }
    return raw == "false" ? std::optional(false) : std::nullopt;
}

std::optional<std::vector<std::string>> DesktopEntry::list(std::string_view key) const {
    const auto raw = rawValue(key);
    if (!raw) {
        return std::nullopt;
    }
    std::vector<std::string> parts;
    std::istringstream list(*raw);
    for (std::string part; std::getline(list, part, ';');) {
        parts.push_back(part);
    }
    return parts;
}

void DesktopEntry::setRaw(std::string_view key, const std::string& raw) {
    const std::string line = std::string(key) + "=" + raw;
    const auto [first, end] = range();
    for (std::size_t at = end; at-- > first;) {
        if (keyOf(lines_[at]) == key) {
            lines_[at] = line;
            return;
        }
    }
    std::size_t behindLast = end;
    while (behindLast > first && Text::trimmed(lines_[behindLast - 1]).empty()) {
        --behindLast;
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(behindLast), line);
}

void DesktopEntry::set(std::string_view key, std::string_view value) {
    setRaw(key, escaped(value));
}

void DesktopEntry::setBoolean(std::string_view key, bool value) {
    setRaw(key, value ? "true" : "false");
}

void DesktopEntry::remove(std::string_view key) {
    const auto [first, end] = range();
    const auto from = lines_.begin() + static_cast<std::ptrdiff_t>(first);
    const auto to = lines_.begin() + static_cast<std::ptrdiff_t>(end);
    lines_.erase(std::remove_if(from, to, [key](const auto& line) { return keyOf(line) == key; }), to);
}

void DesktopEntry::changeEverywhere(
    std::string_view key, const std::function<std::string(const std::string&)>& changed) {
    for (std::string& line : lines_) {
        if (keyOf(line) != key) {
            continue;
        }
        if (const auto value = unescaped(rawValueIn(line))) {
            line = std::string(key) + "=" + escaped(changed(*value));
        }
    }
}

} // namespace tarnwick
