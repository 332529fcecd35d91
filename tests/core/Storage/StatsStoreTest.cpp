// The statistics file: read all or nothing, written whole.
#include "core/Storage/StatsStore.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr StatCounter figures{
    .sent = 12, .replied = 10, .lost = 2, .averageMs = 20.5, .fastestMs = 10.25, .slowestMs = 1e3};

class StatsStoreTest : public testing::Test {
protected:
    test::TemporaryFolder folder;
    StatsStore store{folder.path() / "stats.json"};

    [[nodiscard]] StatsByHost loadedFrom(const std::string& text) const {
        writeFile(store.url, text);
        return store.load();
    }
};

/// The members of one counter by name, to be spoiled one at a time.
std::map<std::string, std::string> goodMembers() {
    return {{"sent", "12"},        {"replied", "10"},      {"lost", "2"},
            {"averageMs", "20.5"}, {"fastestMs", "10.25"}, {"slowestMs", "1000"}};
}

std::string counterText(const std::map<std::string, std::string>& members) {
    std::string text;
    for (const auto& [name, value] : members) {
        text += (text.empty() ? "{\"" : ", \"") + name + "\": " + value;
    }
    return text + "}";
}

std::string fileText(const std::map<std::string, std::string>& members) {
    return "{\"good.example\": " + counterText(goodMembers()) + ", \"host.example\": " + counterText(members)
           + "}";
}

TEST_F(StatsStoreTest, LoadsTheCountersOfEveryHost) {
    EXPECT_THAT(
        loadedFrom(fileText(goodMembers())),
        ElementsAre(Pair("good.example", figures), Pair("host.example", figures)));
}

TEST_F(StatsStoreTest, LoadsNothingWithoutAFile) {
    EXPECT_THAT(store.load(), IsEmpty());
}

TEST_F(StatsStoreTest, ReadsNoFiguresWithoutAFile) {
    EXPECT_EQ(store.read(), StatsByHost{});
}

TEST_F(StatsStoreTest, LoadsNothingFromAnEmptyObject) {
    EXPECT_THAT(loadedFrom("{}"), IsEmpty());
}

TEST_F(StatsStoreTest, DependsNeitherOnOrderNorOnWhiteSpace) {
    EXPECT_THAT(
        loadedFrom(
            "{\"h\":{\"slowestMs\":1000,\"sent\":12,\n\n\"lost\":2,\t\"replied\":10,\"fastestMs\":10.25,"
            "\"averageMs\":20.5}}"),
        ElementsAre(Pair("h", figures)));
}

TEST_F(StatsStoreTest, LoadsTimesThatAreWholeNumbers) {
    auto members = goodMembers();
    members["averageMs"] = "20";
    EXPECT_EQ(loadedFrom(fileText(members)).at("host.example").averageMs, 20);
}

TEST_F(StatsStoreTest, IgnoresMembersThatItDoesNotKnow) {
    auto members = goodMembers();
    members["jitterMs"] = "3";
    EXPECT_THAT(loadedFrom(fileText(members)), ElementsAre(testing::_, Pair("host.example", figures)));
}

TEST_F(StatsStoreTest, LoadsFiguresThatAreNotConsistent) {
    auto members = goodMembers();
    members["sent"] = "1";
    EXPECT_EQ(loadedFrom(fileText(members)).at("host.example").sent, 1);
}

class StatsStoreMember : public StatsStoreTest, public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(
    StatsStore, StatsStoreMember,
    testing::Values("sent", "replied", "lost", "averageMs", "fastestMs", "slowestMs"),
    [](const auto& tested) { return tested.param; });

TEST_P(StatsStoreMember, MissingInOneCounterMakesTheWholeFileUnreadable) {
    auto members = goodMembers();
    members.erase(GetParam());
    EXPECT_THAT(loadedFrom(fileText(members)), IsEmpty());
}

TEST_P(StatsStoreMember, OfAnotherTypeInOneCounterMakesTheWholeFileUnreadable) {
    for (const char* value : {"\"1\"", "null", "true", "[1]", "{}"}) {
        auto members = goodMembers();
        members[GetParam()] = value;
        EXPECT_THAT(loadedFrom(fileText(members)), IsEmpty()) << value;
    }
}

class StatsStoreCount : public StatsStoreTest, public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(
    StatsStore, StatsStoreCount, testing::Values("sent", "replied", "lost"),
    [](const auto& tested) { return tested.param; });

TEST_P(StatsStoreCount, ThatIsNoWholeNumberMakesTheWholeFileUnreadable) {
    for (const char* value : {"1.5", "1e300", "99999999999999999999"}) {
        auto members = goodMembers();
        members[GetParam()] = value;
        EXPECT_THAT(loadedFrom(fileText(members)), IsEmpty()) << value;
    }
}

TEST_P(StatsStoreCount, ThatIsNegativeOrHugeMakesTheWholeFileUnreadable) {
    for (const char* value :
         {"-1", "-9223372036854775808", "4611686018427387904", "9223372036854775807",
          "18446744073709551615"}) {
        auto members = goodMembers();
        members[GetParam()] = value;
        EXPECT_THAT(loadedFrom(fileText(members)), IsEmpty()) << value;
    }
}

TEST_P(StatsStoreCount, MayBeZeroOrHalfOfItsType) {
    for (const char* value : {"0", "4611686018427387903"}) {
        auto members = goodMembers();
        members[GetParam()] = value;
        EXPECT_THAT(loadedFrom(fileText(members)), testing::SizeIs(2)) << value;
    }
}

class UnreadableStats : public StatsStoreTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    StatsStore, UnreadableStats,
    testing::Values(
        "", "{", "[]", "null", "42", "\"text\"", "{\"h\": 1}", "{\"h\": null}", "{\"h\": []}", "{\"h\": {}}",
        "{} trailing", "\x80\x81\xFF", "{\"h\": {\"sent\": 12, \"replied\": 10"));

TEST_P(UnreadableStats, LoadAsNothingAndAreOverwrittenByTheNextSave) {
    EXPECT_THAT(loadedFrom(GetParam()), IsEmpty());
    EXPECT_FALSE(store.save({{"h", figures}}));
    EXPECT_THAT(store.load(), ElementsAre(Pair("h", figures)));
}

TEST_P(UnreadableStats, AreNotReadAsNoFigures) {
    writeFile(store.url, GetParam());
    EXPECT_EQ(store.read(), std::nullopt);
}

TEST_F(StatsStoreTest, LoadsNothingFromEveryTruncationOfAGoodFile) {
    const std::string good = fileText(goodMembers());
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_THAT(loadedFrom(good.substr(0, length)), IsEmpty()) << length;
    }
}

TEST_F(StatsStoreTest, LoadsWhatItSaved) {
    const StatsByHost stats{
        {"1.1.1.1", figures}, {"Bücher.example", {.sent = 1}}, {"a \"b\" \\ c\n", {.lost = 7}}};
    EXPECT_FALSE(store.save(stats));
    EXPECT_EQ(store.load(), stats);
}

TEST_F(StatsStoreTest, SavesOverWhatWasSavedBefore) {
    ASSERT_FALSE(store.save({{"old.example", figures}}));
    EXPECT_FALSE(store.save({{"new.example", figures}}));
    EXPECT_THAT(store.load(), ElementsAre(Pair("new.example", figures)));
}

TEST_F(StatsStoreTest, WritesHostsAndMembersInAlphabeticalOrderOnLinesOfTheirOwn) {
    ASSERT_FALSE(store.save({{"b.example", {.sent = 1}}, {"a.example", figures}}));
    EXPECT_THAT(
        contentOf(store.url),
        testing::ContainsRegex(
            "\"a.example\"[^\n]*\n *\"averageMs\"[^\n]*\n *\"fastestMs\"[^\n]*\n *\"lost\"[^\n]*\n"
            " *\"replied\"[^\n]*\n *\"sent\"[^\n]*\n *\"slowestMs\"[^\n]*\n *}[^\n]*\n"
            " *\"b.example\""));
}

TEST_F(StatsStoreTest, WritesCountsAsWholeNumbers) {
    ASSERT_FALSE(store.save({{"h", {.sent = 9'007'199'254'740'993, .replied = 10, .lost = 2}}}));
    EXPECT_THAT(
        contentOf(store.url),
        testing::AllOf(
            testing::HasSubstr("\"sent\": 9007199254740993"), testing::ContainsRegex("\"lost\": 2[,\n]"),
            testing::ContainsRegex("\"replied\": 10[,\n]")));
}

TEST_F(StatsStoreTest, SavesNoStatisticsAsAnEmptyObject) {
    EXPECT_FALSE(store.save({}));
    EXPECT_THAT(contentOf(store.url), testing::ContainsRegex("^\\{\\s*\\}\\s*$"));
}

TEST_F(StatsStoreTest, WritesNoHostWhoseCounterIsEmpty) {
    EXPECT_FALSE(store.save({{"h", {}}}));
    ASSERT_TRUE(fs::exists(store.url));
    EXPECT_THAT(contentOf(store.url), testing::ContainsRegex("^\\{\\s*\\}\\s*$"));
}

TEST_F(StatsStoreTest, CreatesItsFolderWhenSaving) {
    const StatsStore deeper{folder.path() / "Application Data" / "Tarnwick" / "stats.json"};
    EXPECT_FALSE(deeper.save({{"h", figures}}));
    EXPECT_THAT(deeper.load(), ElementsAre(Pair("h", figures)));
}

TEST_F(StatsStoreTest, LeavesNothingBesideTheFile) {
    ASSERT_FALSE(store.save({{"h", figures}}, FileStore::Durability::crash));
    ASSERT_FALSE(store.save({{"h", figures}}, FileStore::Durability::crash));
    EXPECT_EQ(fileCount(folder.path()), 1);
}

class FlushedStats : public StatsStoreTest {
protected:
    FlushedStats() {
        EXPECT_FALSE(store.save({{"flushed.example", figures}}, FileStore::Durability::powerCut));
        EXPECT_FALSE(store.save({{"later.example", figures}}, FileStore::Durability::crash));
    }
};

TEST_F(FlushedStats, AreLoadedWhenTheFileCanNotBeRead) {
    EXPECT_THAT(loadedFrom(""), ElementsAre(Pair("flushed.example", figures)));
    EXPECT_EQ(store.read(), std::nullopt);
}

TEST_F(FlushedStats, AreNotLoadedWhileTheFileCanBeRead) {
    EXPECT_THAT(store.load(), ElementsAre(Pair("later.example", figures)));
}

TEST_F(FlushedStats, DoNotComeBackForAFileThatWasRemoved) {
    fs::remove(store.url);
    EXPECT_THAT(store.load(), IsEmpty());
}

TEST_F(FlushedStats, AreReplacedByTheNextFlush) {
    ASSERT_FALSE(store.save({{"next.example", figures}}, FileStore::Durability::powerCut));
    ASSERT_FALSE(store.save({}, FileStore::Durability::crash));
    EXPECT_THAT(loadedFrom("{"), ElementsAre(Pair("next.example", figures)));
    EXPECT_EQ(fileCount(folder.path()), 2);
}

TEST_F(FlushedStats, OutliveAKillWhileTheirNameWasGiven) {
    writeFile(store.url.string() + ".flushed.new", "left behind");
    ASSERT_FALSE(store.save({{"next.example", figures}}, FileStore::Durability::powerCut));
    ASSERT_FALSE(store.save({}, FileStore::Durability::crash));
    EXPECT_THAT(loadedFrom("{"), ElementsAre(Pair("next.example", figures)));
    EXPECT_EQ(fileCount(folder.path()), 2);
}

TEST_F(StatsStoreTest, ReportsThatItCannotSave) {
    const fs::path obstacle = folder.path() / "obstacle";
    writeFile(obstacle, "");
    EXPECT_TRUE((StatsStore{obstacle / "stats.json"}.save({{"h", figures}})));
}

TEST_F(StatsStoreTest, SavesTheOtherHostsBesideOneWhoseTextIsNoUtf8) {
    EXPECT_FALSE(store.save({{"good.example", figures}, {"bad\xFF", figures}}));
    EXPECT_EQ(store.load().size(), 2U);
    EXPECT_EQ(store.load().at("good.example"), figures);
}

TEST_F(StatsStoreTest, DropsTheHostsWithTheFewestPingsWhenThereAreTooMany) {
    StatsByHost stats;
    for (std::size_t number = 0; number <= StatsStore::mostHosts; ++number) {
        stats[std::to_string(number) + ".example"] = {.sent = 1000 + static_cast<std::int64_t>(number)};
    }
    stats["present.example"] = {.sent = 1};

    EXPECT_EQ(dropLeastPinged(stats, "present.example"), 2U);

    EXPECT_EQ(stats.size(), StatsStore::mostHosts);
    EXPECT_TRUE(stats.contains("present.example"));
    EXPECT_FALSE(stats.contains("0.example"));
    EXPECT_FALSE(stats.contains("1.example"));
    EXPECT_TRUE(stats.contains("2.example"));
    EXPECT_EQ(dropLeastPinged(stats, "present.example"), 0U);
}

TEST_F(StatsStoreTest, LoadsNothingFromAFolderInItsPlace) {
    fs::create_directory(store.url);
    EXPECT_THAT(store.load(), IsEmpty());
    EXPECT_EQ(store.read(), std::nullopt);
}

} // namespace
} // namespace tarnwick
