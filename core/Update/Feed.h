// The feed: which releases there are. Signed as a whole, with the signature beside it.
#pragma once

#include "core/Update/DocumentReader.h"
#include "core/Update/ReleaseVersion.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

/// What follows the address of a feed or an archive in the address of its signature.
inline constexpr const char* signatureSuffix = ".minisig";

using Sha256 = std::array<unsigned char, 32>;

struct ReleaseArchive {
    std::string address{}; ///< https
    std::string machine{}; ///< as the system calls it: "x86_64"
    std::uint64_t size{};  ///< bytes
    Sha256 sha256{};

    friend bool operator==(const ReleaseArchive&, const ReleaseArchive&) = default;
};

struct Release {
    ReleaseVersion version{};
    std::string channel{};
    ReleaseVersion minimumSystem{}; ///< of the kernel
    std::vector<ReleaseArchive> archives{};
    std::string notes{}; ///< Markdown
};

struct Feed {
    std::chrono::sys_seconds signedAt{};
    std::vector<Release> releases{};
};

inline constexpr std::size_t largestFeed = std::size_t{1} << 20;
inline constexpr std::size_t mostReleases = 100;
inline constexpr std::size_t mostArchives = 16; ///< of a release
inline constexpr std::size_t longestNotes = std::size_t{64} << 10;
inline constexpr std::uint64_t largestArchive = std::uint64_t{256} << 20;

/// All or nothing. `text` has been verified: what it says is the maker's word.
[[nodiscard]] std::variant<Feed, DocumentMistake> parseFeed(const std::string& text);

} // namespace tarnwick
