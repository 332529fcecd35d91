// The texts of keys and signatures. Apart from what verifies them: a program that only hands keys on does not
// load the library for it.
#include "core/Update/Minisign.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tarnwick::Minisign {

namespace {

constexpr std::string_view untrustedStart = "untrusted comment: ";
constexpr std::string_view trustedStart = "trusted comment: ";

using Algorithm = std::array<unsigned char, 2>;
constexpr Algorithm keyAlgorithm{'E', 'd'};
constexpr Algorithm prehashed{'E', 'D'};
constexpr Algorithm legacyAlgorithm{'E', 'd'};

/// The text of `size` bytes in base 64.
constexpr std::size_t encodedSize(std::size_t size) {
    return (size + 2) / 3 * 4;
}

/// The six bits of a letter; none for any other character.
constexpr std::optional<std::uint32_t> bitsOf(char letter) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t place = letters.find(letter);
    return place != std::string_view::npos ? std::optional(static_cast<std::uint32_t>(place)) : std::nullopt;
}

/// Exactly `size` bytes in base 64, with nothing around them, in the one way that they can be written.
template<std::size_t size>
std::optional<std::array<unsigned char, size>> decoded(std::string_view text) {
    constexpr std::size_t padding = encodedSize(size) - (size * 4 + 2) / 3;
    if (text.size() != encodedSize(size) || !text.ends_with(std::string_view("==", padding))) {
        return std::nullopt;
    }
    text.remove_suffix(padding);
    std::array<unsigned char, size> bytes{};
    std::size_t count = 0;
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (const char letter : text) {
        const auto more = bitsOf(letter);
        if (!more) {
            return std::nullopt;
        }
        bits = (bits << 6 | *more) & 0xffff;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.at(count++) = static_cast<unsigned char>(bits >> bitCount);
        }
    }
    const std::uint32_t left = bits & ((1U << bitCount) - 1);
    return left == 0 ? std::optional(bytes) : std::nullopt;
}

/// Takes as many bytes from the front of `bytes` as the result has.
template<class Part>
Part taken(std::span<const unsigned char>& bytes) {
    Part part{};
    std::ranges::copy(bytes.first(part.size()), part.begin());
    bytes = bytes.subspan(part.size());
    return part;
}

/// Takes a line with its break, which may be missing at the end of the text.
std::string_view takeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

} // namespace

std::optional<PublicKey> parsePublicKey(std::string_view line) {
    const auto bytes = decoded<sizeof(Algorithm) + sizeof(KeyId) + sizeof(PublicKey::key)>(line);
    if (!bytes) {
        return std::nullopt;
    }
    std::span<const unsigned char> rest(*bytes);
    if (taken<Algorithm>(rest) != keyAlgorithm) {
        return std::nullopt;
    }
    const auto id = taken<KeyId>(rest);
    return PublicKey{.id = id, .key = taken<decltype(PublicKey::key)>(rest)};
}

std::variant<Signature, Fault> parseSignature(std::string_view text) {
    if (text.size() > largestSignature) {
        return Fault::malformed;
    }
    const std::string_view untrusted = takeLine(text);
    const auto content = decoded<sizeof(Algorithm) + sizeof(KeyId) + sizeof(Half)>(takeLine(text));
    std::string_view comment = takeLine(text);
    const auto global = decoded<sizeof(Half)>(takeLine(text));
    if (!untrusted.starts_with(untrustedStart) || !content || !comment.starts_with(trustedStart) || !global
        || !text.empty()) {
        return Fault::malformed;
    }
    std::span<const unsigned char> rest(*content);
    const auto algorithm = taken<Algorithm>(rest);
    if (algorithm != prehashed) {
        return algorithm == legacyAlgorithm ? Fault::legacy : Fault::malformed;
    }
    comment.remove_prefix(trustedStart.size());
    Signature signature;
    signature.keyId = taken<KeyId>(rest);
    signature.ofContent = taken<Half>(rest);
    signature.ofComment = *global;
    signature.comment = comment;
    return signature;
}

} // namespace tarnwick::Minisign
