#include "core/Update/ArchiveCheck.h"

#include "core/FileDescriptor.h"
#include "core/Update/HttpsAddress.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

namespace tarnwick {

namespace {

static_assert(sizeof(Sha256) == crypto_hash_sha256_BYTES);

/// Of the first field "NAME:VALUE"; none when there is no such field.
std::optional<std::string_view> fieldOf(std::string_view comment, std::string_view name) {
    for (;;) {
        const std::size_t tab = comment.find('\t');
        const std::string_view field = comment.substr(0, tab);
        if (field.starts_with(name) && field.substr(name.size()).starts_with(':')) {
            return field.substr(name.size() + 1);
        }
        if (tab == std::string_view::npos) {
            return std::nullopt;
        }
        comment.remove_prefix(tab + 1);
    }
}

bool namesArchive(std::string_view comment, const ReleaseArchive& archive, const ReleaseVersion& version) {
    const auto file = fieldOf(comment, "file");
    const auto text = fieldOf(comment, "version");
    return file == fileNameIn(archive.address) && text && ReleaseVersion::parse(*text) == version;
}

/// Reads up to `most` bytes of the file for both checksums. The number of bytes read; none on an error.
std::optional<std::uint64_t> addFile(
    const std::filesystem::path& file, std::uint64_t most, Minisign::Verifier& verifier,
    crypto_hash_sha256_state& sha256) {
    const FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    std::array<char, std::size_t{64} << 10> piece{};
    std::uint64_t total = 0;
    while (total < most) {
        const ssize_t count = ::read(opened.get(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        const std::string_view bytes(piece.data(), static_cast<std::size_t>(count));
        verifier.add(bytes);
        ::crypto_hash_sha256_update(
            &sha256, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        total += bytes.size();
    }
    return total;
}

std::string sentenceOf(ArchiveFault fault) {
    switch (fault) {
    case ArchiveFault::unreadable:
        break;
    case ArchiveFault::wrongSize:
        return "The download is incomplete or too large.";
    case ArchiveFault::wrongDigest:
        return "The download is not the file that the update information names.";
    case ArchiveFault::wrongRelease:
        return "The download is signed as another version, so it is not trusted.";
    }
    return "The download can't be read.";
}

} // namespace

std::optional<ArchiveRefusal> checkArchive(
    const std::filesystem::path& file, const ReleaseArchive& archive, const ReleaseVersion& version,
    std::string_view signature, std::span<const Minisign::PublicKey> keys) {
    const auto parsed = Minisign::parseSignature(signature);
    if (const auto* const fault = std::get_if<Minisign::Fault>(&parsed)) {
        return *fault;
    }
    Minisign::Verifier verifier;
    crypto_hash_sha256_state sha256;
    ::crypto_hash_sha256_init(&sha256);
    const auto size = addFile(file, archive.size + 1, verifier, sha256);
    if (size != archive.size) {
        return size ? ArchiveFault::wrongSize : ArchiveFault::unreadable;
    }
    Sha256 digest{};
    ::crypto_hash_sha256_final(&sha256, digest.data());
    if (digest != archive.sha256) {
        return ArchiveFault::wrongDigest;
    }
    const auto comment = verifier.finish(std::get<Minisign::Signature>(parsed), keys);
    if (const auto* const fault = std::get_if<Minisign::Fault>(&comment)) {
        return *fault;
    }
    if (!namesArchive(std::get<std::string>(comment), archive, version)) {
        return ArchiveFault::wrongRelease;
    }
    return std::nullopt;
}

std::string sentence(const ArchiveRefusal& refusal) {
    if (const auto* const fault = std::get_if<Minisign::Fault>(&refusal)) {
        return Minisign::sentence(*fault, "The download");
    }
    return sentenceOf(std::get<ArchiveFault>(refusal));
}

} // namespace tarnwick
