// Any text through `parseFeed`: an accepted feed keeps the bounds, and offers no release that it should not.
#include "core/Update/Feed.h"
#include "core/Update/HttpsAddress.h"
#include "core/Update/UpdateDecision.h"
#include "tests/fuzz/Fuzzing.h"

namespace tarnwick {
namespace {

void judgeRelease(const Release& release) {
    fuzz::require(ReleaseVersion::parse(release.version.text()) == release.version);
    fuzz::require(!release.archives.empty() && release.archives.size() <= mostArchives);
    fuzz::require(release.notes.size() <= longestNotes);
    for (const ReleaseArchive& archive : release.archives) {
        fuzz::require(isHttpsAddress(archive.address) && !fileNameIn(archive.address).empty());
        fuzz::require(archive.size >= 1 && archive.size <= largestArchive);
    }
}

void judgeDecision(const Feed& feed, const ReleaseVersion& running, bool isAskedFor) {
    const UpdateCircumstances circumstances{
        .running = running,
        .machine = "x86_64",
        .system = ReleaseVersion::parse("6.1").value(),
        .channel = "stable",
        .skipped = ReleaseVersion::parse("0.2.0"),
        .isAskedFor = isAskedFor,
        .now = feed.signedAt + std::chrono::days(1)};
    const UpdateDecision decision = decideOnUpdate(feed, circumstances);
    if (const auto* const found = std::get_if<FoundUpdate>(&decision)) {
        fuzz::require(found->release.version > running);
        fuzz::require(isAskedFor || found->release.version > *circumstances.skipped);
        fuzz::require(found->archive.machine == circumstances.machine);
    } else if (const auto* const refused = std::get_if<RefusedUpdate>(&decision)) {
        fuzz::require(refused->version > running && !sentence(*refused).empty());
    }
}

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    const auto parsed = parseFeed(std::string(reinterpret_cast<const char*>(data), size));
    if (const auto* const mistake = std::get_if<DocumentMistake>(&parsed)) {
        fuzz::require(!mistake->text.empty());
        return 0;
    }
    const Feed& feed = std::get<Feed>(parsed);
    fuzz::require(!feed.releases.empty() && feed.releases.size() <= mostReleases);
    for (const Release& release : feed.releases) {
        judgeRelease(release);
        judgeDecision(feed, release.version, false);
    }
    judgeDecision(feed, ReleaseVersion(), true);
    return 0;
}
