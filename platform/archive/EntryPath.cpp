#include "platform/archive/EntryPath.h"

namespace tarnwick {

std::optional<std::vector<std::string>> entryParts(std::string_view path, std::size_t longest) {
    if (path.size() > longest) {
        return std::nullopt;
    }
    if (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t slash = path.find('/');
        const std::string_view part = path.substr(0, slash);
        if (part.empty() || part == "." || part == "..") {
            return std::nullopt;
        }
        parts.emplace_back(part);
        if (slash == std::string_view::npos) {
            return parts;
        }
        path.remove_prefix(slash + 1);
    }
}

bool leadsInside(const std::vector<std::string>& link, std::string_view target, std::size_t longest) {
    constexpr std::string_view up = "../";
    std::size_t folders = link.size() - 1; // around the link
    while (target.starts_with(up)) {
        if (folders-- == 0) {
            return false;
        }
        target.remove_prefix(up.size());
    }
    // The first folder must still be around what is left.
    return folders >= 1 && entryParts(target, longest).has_value();
}

} // namespace tarnwick
