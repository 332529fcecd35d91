#include "core/Update/ReleaseVersion.h"

#include <charconv>
#include <system_error>

namespace tarnwick {

namespace {

/// Takes the number at the beginning of the text.
std::optional<std::uint32_t> takePart(std::string_view& text) {
    std::uint32_t part = 0;
    const char* const begin = text.data();
    const auto [behind, error] = std::from_chars(begin, begin + text.size(), part);
    if (error != std::errc{} || part > ReleaseVersion::largestPart) {
        return std::nullopt;
    }
    const auto digits = static_cast<std::size_t>(behind - begin);
    if (digits > 1 && text.front() == '0') {
        return std::nullopt; // else 1.05 would be 1.5
    }
    text.remove_prefix(digits);
    return part;
}

} // namespace

std::optional<ReleaseVersion> ReleaseVersion::parse(std::string_view text) {
    ReleaseVersion version;
    for (version.count_ = 0; version.count_ < mostParts;) {
        const auto part = takePart(text);
        if (!part) {
            return std::nullopt;
        }
        version.parts_[version.count_++] = *part;
        if (text.empty()) {
            return version;
        }
        if (text.front() != '.') {
            return std::nullopt;
        }
        text.remove_prefix(1);
    }
    return std::nullopt;
}

std::string ReleaseVersion::text() const {
    std::string text = std::to_string(parts_.front());
    for (std::size_t part = 1; part < count_; ++part) {
        text += '.' + std::to_string(parts_[part]);
    }
    return text;
}

std::optional<ReleaseVersion> kernelVersion(std::string_view release) {
    const std::size_t dot = release.find('.');
    if (dot == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t end = release.find_first_not_of("0123456789", dot + 1);
    return ReleaseVersion::parse(release.substr(0, end));
}

} // namespace tarnwick
