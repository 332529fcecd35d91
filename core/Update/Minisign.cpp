#include "core/Update/Minisign.h"

#include <algorithm>
#include <cstdint>
#include <sodium.h>

namespace tarnwick::Minisign {

namespace {

constexpr std::string_view untrustedStart = "untrusted comment: ";
constexpr std::string_view trustedStart = "trusted comment: ";

using Algorithm = std::array<unsigned char, 2>;
constexpr Algorithm keyAlgorithm{'E', 'd'};
constexpr Algorithm prehashed{'E', 'D'};
constexpr Algorithm legacyAlgorithm{'E', 'd'};

static_assert(sizeof(PublicKey::key) == crypto_sign_PUBLICKEYBYTES);
static_assert(sizeof(Half) == crypto_sign_BYTES);

/// Exactly `size` bytes in base 64, with nothing around them.
template<std::size_t size>
std::optional<std::array<unsigned char, size>> decoded(std::string_view text) {
    std::array<unsigned char, size> bytes{};
    std::size_t length = 0;
    const char* end = nullptr;
    const int failed = ::sodium_base642bin(
        bytes.data(), size, text.data(), text.size(), nullptr, &length, &end, sodium_base64_VARIANT_ORIGINAL);
    if (failed != 0 || length != size || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return bytes;
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

bool isSignedBy(const PublicKey& key, const Half& signature, std::span<const unsigned char> message) {
    return ::crypto_sign_verify_detached(signature.data(), message.data(), message.size(), key.key.data())
           == 0;
}

bool isCommentSignedBy(const PublicKey& key, const Signature& signature) {
    std::string message(signature.ofContent.begin(), signature.ofContent.end());
    message += signature.comment;
    return isSignedBy(
        key, signature.ofComment, {reinterpret_cast<const unsigned char*>(message.data()), message.size()});
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

struct Verifier::State {
    crypto_generichash_blake2b_state hash;
};

Verifier::Verifier() : state_(std::make_unique<State>()) {
    // It chooses the fastest code for this processor. It fails where there is no randomness, which is not
    // needed here.
    [[maybe_unused]] const int result = ::sodium_init();
    ::crypto_generichash_blake2b_init(&state_->hash, nullptr, 0, crypto_generichash_blake2b_BYTES_MAX);
}

Verifier::~Verifier() = default;

void Verifier::add(std::string_view bytes) {
    ::crypto_generichash_blake2b_update(
        &state_->hash, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

std::variant<std::string, Fault> Verifier::finish(
    const Signature& signature, std::span<const PublicKey> keys) {
    std::array<unsigned char, crypto_generichash_blake2b_BYTES_MAX> hash{};
    ::crypto_generichash_blake2b_final(&state_->hash, hash.data(), hash.size());
    const auto key = std::ranges::find(keys, signature.keyId, &PublicKey::id);
    if (key == keys.end()) {
        return Fault::unknownKey;
    }
    if (!isSignedBy(*key, signature.ofContent, hash)) {
        return Fault::wrongContent;
    }
    if (!isCommentSignedBy(*key, signature)) {
        return Fault::wrongComment;
    }
    return signature.comment;
}

std::variant<std::string, Fault> verify(
    std::string_view content, std::string_view signature, std::span<const PublicKey> keys) {
    const auto parsed = parseSignature(signature);
    if (const auto* const fault = std::get_if<Fault>(&parsed)) {
        return *fault;
    }
    Verifier verifier;
    verifier.add(content);
    return verifier.finish(std::get<Signature>(parsed), keys);
}

std::string sentence(Fault fault, std::string_view subject) {
    const std::string start(subject);
    switch (fault) {
    case Fault::malformed:
        break;
    case Fault::legacy:
        return start + " is signed in an outdated way that is not trusted.";
    case Fault::unknownKey:
        return start + " is signed with an unknown key, so it is not trusted.";
    case Fault::wrongContent:
        return start + " does not match its signature, so it is not trusted.";
    case Fault::wrongComment:
        return start + " has a signature that was changed, so it is not trusted.";
    }
    return start + " has no signature that can be read, so it is not trusted.";
}

} // namespace tarnwick::Minisign
