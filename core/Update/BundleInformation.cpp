#include "core/Update/BundleInformation.h"

#include "core/Update/HttpsAddress.h"

namespace tarnwick {

namespace {

std::optional<UpdateSource> readSource(DocumentReader& members, std::optional<DocumentMistake>& mistake) {
    if (!members.has("feedAddress") && !members.has("publicKeys")) {
        return std::nullopt;
    }
    UpdateSource source;
    source.feedAddress = members.text("feedAddress", longestAddress);
    if (!isHttpsAddress(source.feedAddress)) {
        members.complain("feedAddress", "an address that begins with https://");
    }
    for (const nlohmann::json& element : members.list("publicKeys", mostPublicKeys)) {
        const auto* const line = element.get_ptr<const std::string*>();
        const auto key = line != nullptr ? Minisign::parsePublicKey(*line) : std::nullopt;
        if (!key) {
            complainOf(
                mistake, members.placeOf("publicKeys", source.publicKeys.size()), "a public key of minisign");
            break;
        }
        source.publicKeys.push_back(*key);
    }
    return source;
}

std::chrono::seconds readInterval(DocumentReader& members) {
    if (!members.has("checkInterval")) {
        return usualCheckInterval;
    }
    return std::chrono::seconds(members.number(
        "checkInterval", static_cast<std::uint64_t>(shortestCheckInterval.count()),
        static_cast<std::uint64_t>(longestCheckInterval.count())));
}

} // namespace

std::variant<BundleInformation, DocumentMistake> parseBundleInformation(const std::string& text) {
    const auto document = readDocument(text, largestBundleInformation);
    if (const auto* const unread = std::get_if<DocumentMistake>(&document)) {
        return *unread;
    }
    std::optional<DocumentMistake> mistake;
    DocumentReader members(std::get<nlohmann::json>(document), "", mistake);
    BundleInformation information;
    information.version = members.parsed("version", ReleaseVersion::parse, "a version");
    information.source = readSource(members, mistake);
    information.checkInterval = readInterval(members);
    information.channel =
        members.has("channel") ? members.parsed("channel", parseWord, "a word") : stableChannel;
    if (mistake) {
        return *mistake;
    }
    return information;
}

} // namespace tarnwick
