// What a feed says, and what is none.
#include "core/Update/Feed.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using FeedPath = nlohmann::json::json_pointer;

const std::string someDigest = "c0ff" + std::string(58, 'a') + "1f";

nlohmann::json someArchive() {
    return {
        {"address", "https://one.example/Tarnwick-0.2.0-x86_64.tar.zst"},
        {"machine", "x86_64"},
        {"size", 12345678},
        {"sha256", someDigest}};
}

nlohmann::json someRelease() {
    return {
        {"version", "0.2.0"},
        {"channel", "stable"},
        {"minimumSystem", "6.1"},
        {"archives", {someArchive()}},
        {"notes", "## News\n\n- One"}};
}

nlohmann::json someFeed() {
    return {{"signedAt", "2026-11-23T04:00:00Z"}, {"releases", {someRelease()}}};
}

Feed parsedFeed(const nlohmann::json& object) {
    const auto parsed = parseFeed(object.dump());
    const auto* const mistake = std::get_if<DocumentMistake>(&parsed);
    EXPECT_FALSE(mistake) << mistake->text;
    return mistake != nullptr ? Feed{} : std::get<Feed>(parsed);
}

std::string mistakeInFeed(const std::string& text) {
    const auto parsed = parseFeed(text);
    const auto* const mistake = std::get_if<DocumentMistake>(&parsed);
    return mistake != nullptr ? mistake->text : "";
}

TEST(Feed, HasWhatTheDocumentSays) {
    const Feed feed = parsedFeed(someFeed());
    EXPECT_EQ(feed.signedAt.time_since_epoch().count(), 1795406400);
    ASSERT_EQ(feed.releases.size(), 1U);
    const Release& release = feed.releases.front();
    EXPECT_EQ(release.version.text(), "0.2.0");
    EXPECT_EQ(release.channel, "stable");
    EXPECT_EQ(release.minimumSystem.text(), "6.1");
    EXPECT_EQ(release.notes, "## News\n\n- One");
    ASSERT_EQ(release.archives.size(), 1U);
    const ReleaseArchive& archive = release.archives.front();
    EXPECT_EQ(archive.address, "https://one.example/Tarnwick-0.2.0-x86_64.tar.zst");
    EXPECT_EQ(archive.machine, "x86_64");
    EXPECT_EQ(archive.size, 12345678U);
    EXPECT_EQ(archive.sha256[0], 0xC0);
    EXPECT_EQ(archive.sha256[1], 0xFF);
    EXPECT_EQ(archive.sha256[30], 0xAA);
    EXPECT_EQ(archive.sha256[31], 0x1F);
}

TEST(Feed, KeepsTheOrderOfReleasesAndArchives) {
    nlohmann::json object = someFeed();
    object["releases"].push_back(someRelease());
    object["releases"][1]["version"] = "0.1.0";
    object["releases"][1]["archives"].push_back(someArchive());
    object["releases"][1]["archives"][1]["machine"] = "aarch64";
    const Feed feed = parsedFeed(object);
    ASSERT_EQ(feed.releases.size(), 2U);
    EXPECT_EQ(feed.releases[1].version.text(), "0.1.0");
    ASSERT_EQ(feed.releases[1].archives.size(), 2U);
    EXPECT_EQ(feed.releases[1].archives[1].machine, "aarch64");
}

TEST(Feed, MayHaveMembersOfLaterVersions) {
    nlohmann::json object = someFeed();
    object["later"] = true;
    object["releases"][0]["later"] = nullptr;
    object["releases"][0]["archives"][0]["later"] = {1, 2};
    EXPECT_EQ(parsedFeed(object).releases.size(), 1U);
}

struct Bounded {
    std::string name;
    std::string path;
    nlohmann::json value;

    friend void PrintTo(const Bounded& bounded, std::ostream* out) { *out << bounded.name; }
};

nlohmann::json many(const nlohmann::json& element, std::size_t count) {
    return nlohmann::json(std::vector<nlohmann::json>(count, element));
}

class FeedAtItsBounds : public testing::TestWithParam<Bounded> {};

INSTANTIATE_TEST_SUITE_P(
    Feed, FeedAtItsBounds,
    testing::Values(
        Bounded{"Releases", "/releases", many(someRelease(), mostReleases)},
        Bounded{"Archives", "/releases/0/archives", many(someArchive(), mostArchives)},
        Bounded{"Notes", "/releases/0/notes", std::string(longestNotes, 'a')},
        Bounded{"NoNotes", "/releases/0/notes", ""},
        Bounded{"LargestArchive", "/releases/0/archives/0/size", largestArchive},
        Bounded{"SmallestArchive", "/releases/0/archives/0/size", 1},
        Bounded{"Channel", "/releases/0/channel", std::string(32, 'a')},
        Bounded{"Machine", "/releases/0/archives/0/machine", "AZaz09.-_"}),
    test::caseName);

TEST_P(FeedAtItsBounds, IsTaken) {
    nlohmann::json object = someFeed();
    object[FeedPath(GetParam().path)] = GetParam().value;
    EXPECT_EQ(mistakeInFeed(object.dump()), "");
}

struct WrongFeed {
    std::string name;
    std::string path;
    nlohmann::json value; ///< discarded: the member is missing
    std::string mistake;

    friend void PrintTo(const WrongFeed& wrong, std::ostream* out) { *out << wrong.name; }
};

class RefusedFeed : public testing::TestWithParam<WrongFeed> {};

const nlohmann::json absent(nlohmann::json::value_t::discarded);
const std::string mustBeTime = "signedAt must be a time as 2026-11-23T04:00:00Z";
const std::string mustBeReleases = "releases must be a list of 1 to 100 elements";
const std::string mustBeArchives = "releases[0].archives must be a list of 1 to 16 elements";
const std::string mustBeNotes = "releases[0].notes must be a text of up to 65536 bytes";
const std::string inArchive = "releases[0].archives[0].";
const std::string mustBeHttps = inArchive + "address must be an address that begins with https://";
const std::string mustBeSize = inArchive + "size must be a whole number from 1 to 268435456";
const std::string mustBeDigest = inArchive + "sha256 must be 64 hexadecimal digits";
const std::string mustBeText = " must be a text of up to 4096 bytes";

INSTANTIATE_TEST_SUITE_P(
    Document, RefusedFeed,
    testing::Values(
        WrongFeed{"NoTime", "/signedAt", absent, "signedAt" + mustBeText},
        WrongFeed{"TimeIsNumber", "/signedAt", 1795406400, "signedAt" + mustBeText},
        WrongFeed{"LocalTime", "/signedAt", "2026-11-23T04:00:00+01:00", mustBeTime},
        WrongFeed{"NoReleases", "/releases", absent, mustBeReleases},
        WrongFeed{"EmptyReleases", "/releases", nlohmann::json::array(), mustBeReleases},
        WrongFeed{"ReleasesAreObject", "/releases", someRelease(), mustBeReleases},
        WrongFeed{"TooManyReleases", "/releases", many(someRelease(), mostReleases + 1), mustBeReleases},
        WrongFeed{"ReleaseIsText", "/releases/0", "0.2.0", "releases[0] must be an object"},
        WrongFeed{"ReleaseIsList", "/releases/0", {1, 2}, "releases[0] must be an object"}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Release, RefusedFeed,
    testing::Values(
        WrongFeed{"NoVersion", "/releases/0/version", absent, "releases[0].version" + mustBeText},
        WrongFeed{"NoneVersion", "/releases/0/version", "0.2.0-1", "releases[0].version must be a version"},
        WrongFeed{"NoChannel", "/releases/0/channel", absent, "releases[0].channel" + mustBeText},
        WrongFeed{
            "LongChannel", "/releases/0/channel", std::string(33, 'a'), "releases[0].channel must be a word"},
        WrongFeed{"ChannelHasBreak", "/releases/0/channel", "a\nb", "releases[0].channel must be a word"},
        WrongFeed{"NoSystem", "/releases/0/minimumSystem", absent, "releases[0].minimumSystem" + mustBeText},
        WrongFeed{
            "NamedSystem", "/releases/0/minimumSystem", "Linux 6.1",
            "releases[0].minimumSystem must be a version"},
        WrongFeed{"NoNotes", "/releases/0/notes", absent, mustBeNotes},
        WrongFeed{"LongNotes", "/releases/0/notes", std::string(longestNotes + 1, 'a'), mustBeNotes},
        WrongFeed{"NotesAreList", "/releases/0/notes", {"a"}, mustBeNotes},
        WrongFeed{"NoArchives", "/releases/0/archives", absent, mustBeArchives},
        WrongFeed{"EmptyArchives", "/releases/0/archives", nlohmann::json::array(), mustBeArchives},
        WrongFeed{
            "TooManyArchives", "/releases/0/archives", many(someArchive(), mostArchives + 1), mustBeArchives},
        WrongFeed{
            "ArchiveIsNull", "/releases/0/archives/0", nullptr, "releases[0].archives[0] must be an object"}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Archive, RefusedFeed,
    testing::Values(
        WrongFeed{
            "NoAddress", "/releases/0/archives/0/address", absent,
            inArchive + "address must be a text of up to 2048 bytes"},
        WrongFeed{
            "PlainAddress", "/releases/0/archives/0/address", "http://one.example/a.tar.zst", mustBeHttps},
        WrongFeed{"PathAddress", "/releases/0/archives/0/address", "/etc/passwd", mustBeHttps},
        WrongFeed{"NoMachine", "/releases/0/archives/0/machine", absent, inArchive + "machine" + mustBeText},
        WrongFeed{
            "MachineIsPath", "/releases/0/archives/0/machine", "../x", inArchive + "machine must be a word"},
        WrongFeed{"NoSize", "/releases/0/archives/0/size", absent, mustBeSize},
        WrongFeed{"SizeIsZero", "/releases/0/archives/0/size", 0, mustBeSize},
        WrongFeed{"SizeIsNegative", "/releases/0/archives/0/size", -1, mustBeSize},
        WrongFeed{"SizeIsText", "/releases/0/archives/0/size", "1", mustBeSize},
        WrongFeed{"SizeIsFraction", "/releases/0/archives/0/size", 1.5, mustBeSize},
        WrongFeed{"TooLarge", "/releases/0/archives/0/size", largestArchive + 1, mustBeSize},
        WrongFeed{"NoDigest", "/releases/0/archives/0/sha256", absent, inArchive + "sha256" + mustBeText},
        WrongFeed{"ShortDigest", "/releases/0/archives/0/sha256", someDigest.substr(1), mustBeDigest},
        WrongFeed{"LongDigest", "/releases/0/archives/0/sha256", someDigest + "0", mustBeDigest},
        WrongFeed{"CapitalDigest", "/releases/0/archives/0/sha256", std::string(64, 'A'), mustBeDigest},
        WrongFeed{"OtherDigest", "/releases/0/archives/0/sha256", std::string(63, 'a') + "g", mustBeDigest}),
    test::caseName);

TEST_P(RefusedFeed, TellsTheFirstMistake) {
    nlohmann::json object = someFeed();
    const FeedPath path(GetParam().path);
    if (GetParam().value.is_discarded()) {
        object[path.parent_pointer()].erase(path.back());
    } else {
        object[path] = GetParam().value;
    }
    EXPECT_EQ(mistakeInFeed(object.dump()), GetParam().mistake);
}

TEST(Feed, ThatIsNoObjectIsRefusedWithAReason) {
    EXPECT_EQ(mistakeInFeed(""), "line 1: it is empty");
    EXPECT_EQ(mistakeInFeed("[]"), "line 1: it must be one JSON object: { ... }");
    EXPECT_EQ(
        mistakeInFeed("{\"signedAt\": 1,\n\"releases\": [],\n\"signedAt\": 2}"), "signedAt is there twice");
    EXPECT_NE(mistakeInFeed(std::string(100'000, '[')), "");
}

TEST(Feed, ThatIsTooLargeIsRefusedUnread) {
    std::string text = someFeed().dump();
    text.resize(largestFeed, ' ');
    EXPECT_EQ(mistakeInFeed(text), "");
    EXPECT_EQ(mistakeInFeed(text + " "), "it has more than 1048576 bytes");
}

} // namespace
} // namespace tarnwick
