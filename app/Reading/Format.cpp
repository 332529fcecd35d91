#include "app/Reading/Format.h"

#include "core/Text.h"

#include <algorithm>
#include <climits>
#include <clocale>

namespace tarnwick::Format {

std::string wholeMs(double ms) {
    return Text::whole(ms) + " ms";
}

Grouping Grouping::ofUser() {
    Grouping grouping;
    const locale_t user = newlocale(LC_ALL_MASK, "", nullptr);
    if (user == nullptr) {
        return grouping; // the environment names a locale that is not installed
    }
    const locale_t before = uselocale(user);
    const lconv* conventions = localeconv();
    grouping.separator = conventions->thousands_sep;
    for (const char* size = conventions->grouping; *size != 0; ++size) {
        const bool isEnd = *size < 0 || *size == CHAR_MAX;
        grouping.sizes.push_back(isEnd ? 0 : *size);
    }
    uselocale(before);
    freelocale(user);
    return grouping;
}

std::string integer(std::int64_t value, const Grouping& grouping) {
    std::string text = std::to_string(value);
    if (grouping.separator.empty() || grouping.sizes.empty()) {
        return text;
    }
    const std::size_t firstDigit = value < 0 ? 1 : 0;
    std::size_t at = text.size();
    for (std::size_t group = 0;; ++group) {
        const auto size =
            static_cast<std::size_t>(grouping.sizes[std::min(group, grouping.sizes.size() - 1)]);
        if (size == 0 || at <= firstDigit + size) {
            return text;
        }
        at -= size;
        text.insert(at, grouping.separator);
    }
}

} // namespace tarnwick::Format
