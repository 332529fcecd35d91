// A key pair that signs in the minisign format, for tests of what verifies.
#pragma once

#include <array>
#include <sodium.h>
#include <string>
#include <string_view>

namespace tarnwick::test {

class MinisignKey {
public:
    /// Two keys of the same number are the same key.
    explicit MinisignKey(unsigned char number) {
        std::array<unsigned char, crypto_sign_SEEDBYTES> seed{};
        seed.fill(number);
        ::crypto_sign_seed_keypair(public_.data(), secret_.data(), seed.data());
        id_.assign(8, static_cast<char>(number));
    }

    /// The same key under the id of another one.
    [[nodiscard]] MinisignKey withIdOf(const MinisignKey& other) const {
        MinisignKey key = *this;
        key.id_ = other.id_;
        return key;
    }

    [[nodiscard]] std::string publicLine() const { return base64("Ed" + id_ + textOf(public_)); }

    /// The text of the signature file. `algorithm` is "ED", or "Ed" for a legacy signature.
    [[nodiscard]] std::string sign(
        std::string_view content, const std::string& comment = "a comment",
        const std::string& algorithm = "ED") const {
        const std::string signature = signatureOf(algorithm == "ED" ? hashOf(content) : std::string(content));
        return "untrusted comment: made by a test\n" + base64(algorithm + id_ + signature)
               + "\ntrusted comment: " + comment + "\n" + base64(signatureOf(signature + comment)) + "\n";
    }

    [[nodiscard]] static std::string base64(std::string_view bytes) {
        std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
        ::sodium_bin2base64(
            text.data(), text.size(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
            sodium_base64_VARIANT_ORIGINAL);
        text.pop_back(); // the zero at its end
        return text;
    }

private:
    template<class Bytes>
    [[nodiscard]] static std::string textOf(const Bytes& bytes) {
        return {bytes.begin(), bytes.end()};
    }

    [[nodiscard]] static std::string hashOf(std::string_view content) {
        std::array<unsigned char, crypto_generichash_blake2b_BYTES_MAX> hash{};
        ::crypto_generichash_blake2b(
            hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(content.data()), content.size(),
            nullptr, 0);
        return textOf(hash);
    }

    [[nodiscard]] std::string signatureOf(const std::string& message) const {
        std::array<unsigned char, crypto_sign_BYTES> signature{};
        ::crypto_sign_detached(
            signature.data(), nullptr, reinterpret_cast<const unsigned char*>(message.data()), message.size(),
            secret_.data());
        return textOf(signature);
    }

    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> public_{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret_{};
    std::string id_;
};

} // namespace tarnwick::test
