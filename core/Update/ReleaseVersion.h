// The number of a release: "1.2", "1.10.3".
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

/// Up to four whole numbers with dots between. Those that are missing at the end are zero: 1.2 is 1.2.0.
class ReleaseVersion {
public:
    static constexpr std::size_t mostParts = 4;
    static constexpr std::uint32_t largestPart = 999'999;

    /// Zero.
    ReleaseVersion() = default;

    /// None when anything else is in the text: a sign, a blank, a letter, a leading zero.
    [[nodiscard]] static std::optional<ReleaseVersion> parse(std::string_view text);

    /// As it was written.
    [[nodiscard]] std::string text() const;

    friend std::weak_ordering operator<=>(const ReleaseVersion& left, const ReleaseVersion& right) {
        return left.parts_ <=> right.parts_;
    }

    friend bool operator==(const ReleaseVersion& left, const ReleaseVersion& right) {
        return left.parts_ == right.parts_;
    }

private:
    std::array<std::uint32_t, mostParts> parts_{};
    std::size_t count_ = 1; ///< of the parts that were written
};

/// The major and minor number of the kernel by the release that it tells: 6.1 of "6.1.0-18-amd64". None where
/// the text does not begin with them.
[[nodiscard]] std::optional<ReleaseVersion> kernelVersion(std::string_view release);

} // namespace tarnwick
