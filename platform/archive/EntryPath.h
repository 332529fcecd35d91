// Which names and links an archive may have, so that nothing in it leaves its folder.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// The folders of a relative path and the name at its end. A slash behind it is dropped. None where a part is
/// empty, "." or "..", so for an absolute path too, and where the path has more than `longest` bytes.
[[nodiscard]] std::optional<std::vector<std::string>> entryParts(std::string_view path, std::size_t longest);

/// Whether a symbolic link at `link`, as parts, leads to somewhere below the first of these parts. ".." may
/// stand only at the beginning of `target`: there it leads from folder to folder, while behind a name, which
/// may be a link, it could lead anywhere. So links that each stay inside stay inside together.
[[nodiscard]] bool leadsInside(
    const std::vector<std::string>& link, std::string_view target, std::size_t longest);

} // namespace tarnwick
