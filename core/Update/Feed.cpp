#include "core/Update/Feed.h"

#include "core/Update/HttpsAddress.h"
#include "core/Update/UtcTime.h"

#include <optional>
#include <string_view>
#include <utility>

namespace tarnwick {

namespace {

/// Of a lower-case hexadecimal digit; none for another letter.
std::optional<unsigned> hexadecimalValue(char digit) {
    constexpr std::string_view digits = "0123456789abcdef";
    const std::size_t value = digits.find(digit);
    return value != std::string_view::npos ? std::optional(static_cast<unsigned>(value)) : std::nullopt;
}

std::optional<Sha256> parseSha256(std::string_view text) {
    Sha256 digest{};
    if (text.size() != 2 * digest.size()) {
        return std::nullopt;
    }
    for (std::size_t byte = 0; byte < digest.size(); ++byte) {
        const auto high = hexadecimalValue(text[2 * byte]);
        const auto low = hexadecimalValue(text[2 * byte + 1]);
        if (!high || !low) {
            return std::nullopt;
        }
        digest[byte] = static_cast<unsigned char>(16 * *high + *low);
    }
    return digest;
}

ReleaseArchive readArchive(
    const nlohmann::json& object, const std::string& place, std::optional<DocumentMistake>& mistake) {
    DocumentReader members(object, place, mistake);
    ReleaseArchive archive;
    archive.address = members.text("address", longestAddress);
    if (!isHttpsAddress(archive.address)) {
        members.complain("address", "an address that begins with https://");
    }
    archive.machine = members.parsed("machine", parseWord, "a word");
    archive.size = members.number("size", 1, largestArchive);
    archive.sha256 = members.parsed("sha256", parseSha256, "64 hexadecimal digits");
    return archive;
}

Release readRelease(
    const nlohmann::json& object, const std::string& place, std::optional<DocumentMistake>& mistake) {
    DocumentReader members(object, place, mistake);
    Release release;
    release.version = members.parsed("version", ReleaseVersion::parse, "a version");
    release.channel = members.parsed("channel", parseWord, "a word");
    release.minimumSystem = members.parsed("minimumSystem", ReleaseVersion::parse, "a version");
    for (const nlohmann::json& archive : members.list("archives", mostArchives)) {
        release.archives.push_back(
            readArchive(archive, members.placeOf("archives", release.archives.size()), mistake));
    }
    release.notes = members.text("notes", longestNotes);
    return release;
}

} // namespace

std::variant<Feed, DocumentMistake> parseFeed(const std::string& text) {
    const auto document = readDocument(text, largestFeed);
    if (const auto* const unread = std::get_if<DocumentMistake>(&document)) {
        return *unread;
    }
    std::optional<DocumentMistake> mistake;
    DocumentReader members(std::get<nlohmann::json>(document), "", mistake);
    Feed feed;
    feed.signedAt = members.parsed("signedAt", parseUtcTime, "a time as 2026-11-23T04:00:00Z");
    for (const nlohmann::json& release : members.list("releases", mostReleases)) {
        feed.releases.push_back(
            readRelease(release, members.placeOf("releases", feed.releases.size()), mistake));
    }
    if (mistake) {
        return *mistake;
    }
    return feed;
}

} // namespace tarnwick
