// Reads the feed and the archives of a folder as programs read a maker's, and prints what they are told.
// usage: tarnwick-read-release FOLDER PUBLIC-KEY...
#include "core/Update/ArchiveCheck.h"
#include "core/Update/Feed.h"
#include "core/Update/Minisign.h"

#include "tests/support/Files.h"

#include <chrono>
#include <iostream>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace tarnwick;
using Keys = std::vector<Minisign::PublicKey>;

int refuse(const std::string& reason) {
    std::cerr << reason << '\n';
    return 1;
}

std::string signatureOf(const std::filesystem::path& file) {
    return test::contentOf(file.string() + signatureSuffix);
}

int readArchive(
    const std::filesystem::path& folder, const Release& release, const ReleaseArchive& archive,
    const Keys& keys) {
    const auto file = folder / std::filesystem::path(archive.address).filename();
    if (const auto refusal = checkArchive(file, archive, release.version, signatureOf(file), keys)) {
        return refuse(sentence(*refusal));
    }
    std::cout << archive.machine << ' ' << archive.address << '\n';
    return 0;
}

int readRelease(const std::filesystem::path& folder, const Release& release, const Keys& keys) {
    std::cout << release.version.text() << ' ' << release.channel << ' ' << release.minimumSystem.text()
              << '\n'
              << release.notes << '\n';
    for (const ReleaseArchive& archive : release.archives) {
        if (const int status = readArchive(folder, release, archive, keys)) {
            return status;
        }
    }
    return 0;
}

int readFolder(const std::filesystem::path& folder, const Keys& keys) {
    const std::filesystem::path file = folder / "feed.json";
    const std::string text = test::contentOf(file);
    const auto verified = Minisign::verify(text, signatureOf(file), keys);
    if (const auto* const fault = std::get_if<Minisign::Fault>(&verified)) {
        return refuse(Minisign::sentence(*fault, "The feed"));
    }
    const auto parsed = parseFeed(text);
    if (const auto* const mistake = std::get_if<DocumentMistake>(&parsed)) {
        return refuse(mistake->text);
    }
    const auto& feed = std::get<Feed>(parsed);
    std::cout << "signed at " << feed.signedAt.time_since_epoch().count() << '\n';
    for (const Release& release : feed.releases) {
        if (const int status = readRelease(folder, release, keys)) {
            return status;
        }
    }
    return 0;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> words(arguments, arguments + argumentCount);
    if (words.size() < 3) {
        return refuse("usage: tarnwick-read-release FOLDER PUBLIC-KEY...");
    }
    Keys keys;
    for (const std::string& line : std::span(words).subspan(2)) {
        const auto key = Minisign::parsePublicKey(line);
        if (!key) {
            return refuse(line + " is no key");
        }
        keys.push_back(*key);
    }
    return readFolder(words[1], keys);
}
