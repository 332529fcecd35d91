// Signatures in the minisign format: who vouches for a document or an archive.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tarnwick::Minisign {

/// The tool draws one at random for each key.
using KeyId = std::array<unsigned char, 8>;

struct PublicKey {
    KeyId id{};
    std::array<unsigned char, 32> key{}; ///< Ed25519

    friend bool operator==(const PublicKey&, const PublicKey&) = default;
};

/// The second line of the file with the public key: "RW...". None for any other text.
[[nodiscard]] std::optional<PublicKey> parsePublicKey(std::string_view line);

/// Why something is not trusted.
enum class Fault {
    malformed,    ///< the text is no signature, or has more than `largestSignature` bytes
    legacy,       ///< a signature over the content itself; see `parseSignature`
    unknownKey,   ///< none of the keys has the signature's key id
    wrongContent, ///< the signature belongs to another content, or to another key
    wrongComment, ///< the trusted comment belongs to another signature
};

using Half = std::array<unsigned char, 64>;

struct Signature {
    KeyId keyId{};
    Half ofContent{};      ///< over the content's BLAKE2b-512
    Half ofComment{};      ///< over `ofContent` with the comment behind it
    std::string comment{}; ///< trusted only once it has been verified
};

inline constexpr std::size_t largestSignature = std::size_t{16} << 10;

/// The text of a signature file. The tool's legacy signatures are refused: they are over the content itself,
/// so an archive would have to be in memory as a whole, and one key would sign in two ways that can be
/// mistaken for each other.
[[nodiscard]] std::variant<Signature, Fault> parseSignature(std::string_view text);

/// Takes the content piece by piece. Any thread, one at a time.
class Verifier {
public:
    Verifier();
    Verifier(const Verifier&) = delete;
    Verifier& operator=(const Verifier&) = delete;
    ~Verifier();

    void add(std::string_view bytes);

    /// The trusted comment, if one of the keys has signed the content that was added, and the comment with
    /// it. Once.
    [[nodiscard]] std::variant<std::string, Fault> finish(
        const Signature& signature, std::span<const PublicKey> keys);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The same for a content that is in memory, with the text of its signature file.
[[nodiscard]] std::variant<std::string, Fault> verify(
    std::string_view content, std::string_view signature, std::span<const PublicKey> keys);

/// For users. `subject` begins the sentence: "The download".
[[nodiscard]] std::string sentence(Fault fault, std::string_view subject);

} // namespace tarnwick::Minisign
