#include "core/Update/Minisign.h"

#include <algorithm>
#include <cstdint>
#include <sodium.h>

namespace tarnwick::Minisign {

namespace {

static_assert(sizeof(PublicKey::key) == crypto_sign_PUBLICKEYBYTES);
static_assert(sizeof(Half) == crypto_sign_BYTES);

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
