// The recorder of the all-time figures: one writer, takeover, failures, and what is written when.
#include "app/Monitor/StatsRecorder.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <optional>
#include <sys/stat.h>

namespace tarnwick {

namespace {

using test::TemporaryFolder;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;
using Saved = StatsRecorder::Saved;
using State = StatsRecorder::State;

namespace fs = std::filesystem;

constexpr auto forTheCrash = FileStore::Durability::crash;
constexpr auto forThePowerCut = FileStore::Durability::powerCut;

constexpr auto host = "host.test";
constexpr auto otherHost = "other.test";

StatCounter sent(std::int64_t count) {
    return {.sent = count};
}

class StatsRecorderTest : public testing::Test {
protected:
    StatsRecorder& start(std::optional<StatsRecorder>& recorder) const {
        recorder.emplace(store);
        recorder->load();
        return *recorder;
    }

    [[nodiscard]] std::string fileText(const fs::path& path) const {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void writeFile(const std::string& text) const {
        fs::create_directories(store.url.parent_path());
        std::ofstream(store.url) << text;
    }

    /// Each replacement of the file makes a new one of the same name.
    [[nodiscard]] ino_t fileNumber() const {
        struct stat info {};

        return ::stat(store.url.c_str(), &info) == 0 ? info.st_ino : 0;
    }

    /// While this stands, no new figures can be put in the file's place.
    [[nodiscard]] fs::path obstacle() const { return store.url.string() + ".new"; }

    void letWritingFail() const { fs::create_directories(obstacle()); }

    void letWritingSucceed() const { fs::remove(obstacle()); }

    /// Copies of files kept aside.
    [[nodiscard]] std::ptrdiff_t keptAside() const {
        return std::count_if(
            fs::directory_iterator(store.url.parent_path()), fs::directory_iterator(), [](const auto& entry) {
                return entry.path().filename().string().starts_with("stats.json.unreadable");
            });
    }

    test::TemporaryFolder folder;
    StatsStore store{folder.path() / "Tarnwick" / "stats.json"};
    std::optional<StatsRecorder> first;
    std::optional<StatsRecorder> second;
};

TEST_F(StatsRecorderTest, CannotRecordBeforeItHasLoaded) {
    EXPECT_EQ(StatsRecorder(store).state(), State::cannotRecord);
}

TEST_F(StatsRecorderTest, AloneItRecords) {
    EXPECT_EQ(start(first).state(), State::records);
}

TEST_F(StatsRecorderTest, AHostThatIsNotInTheFileHasAnEmptyCounter) {
    EXPECT_EQ(start(first).figures(host), StatCounter());
}

TEST_F(StatsRecorderTest, ReadsTheFiguresOfEveryHost) {
    ASSERT_FALSE(store.save({{host, sent(3)}, {otherHost, sent(5)}}));

    start(first);

    EXPECT_EQ(first->figures(host), sent(3));
    EXPECT_EQ(first->figures(otherHost), sent(5));
}

TEST_F(StatsRecorderTest, LoadingWritesNothing) {
    start(first);

    EXPECT_FALSE(fs::exists(store.url));
}

TEST_F(StatsRecorderTest, SavingKeepsTheOtherHosts) {
    ASSERT_FALSE(store.save({{otherHost, sent(5)}}));
    start(first);

    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::asTold);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(1)), Pair(otherHost, sent(5))));
}

TEST_F(StatsRecorderTest, EmptyCountersAreNotWritten) {
    ASSERT_FALSE(store.save({{otherHost, {}}}));
    start(first);

    first->save(host, {}, forTheCrash);

    EXPECT_THAT(store.load(), IsEmpty());
}

TEST_F(StatsRecorderTest, ACounterWithoutCountsIsEmptyWhateverItsTimes) {
    start(first);

    first->save(host, {.averageMs = 20, .fastestMs = 20, .slowestMs = 20}, forTheCrash);

    EXPECT_THAT(store.load(), IsEmpty());
}

TEST_F(StatsRecorderTest, UnchangedFiguresAreNotWrittenAgain) {
    start(first);
    first->save(host, sent(1), forTheCrash);
    const ino_t before = fileNumber();

    first->save(host, sent(1), forTheCrash);

    EXPECT_EQ(fileNumber(), before);
}

TEST_F(StatsRecorderTest, ChangedFiguresAreWritten) {
    start(first);
    first->save(host, sent(1), forTheCrash);

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, UnchangedFiguresAreWrittenAgainWhenTheyShallOutliveMore) {
    start(first);
    first->save(host, sent(1), forTheCrash);
    const ino_t before = fileNumber();

    first->save(host, sent(1), forThePowerCut);

    EXPECT_NE(fileNumber(), before);
}

TEST_F(StatsRecorderTest, UnchangedFiguresAreNotWrittenAgainWhenTheyOutliveEnough) {
    start(first);
    first->save(host, sent(1), forThePowerCut);
    const ino_t before = fileNumber();

    first->save(host, sent(1), forTheCrash);
    first->save(host, sent(1), forThePowerCut);

    EXPECT_EQ(fileNumber(), before);
}

// Failures.

TEST_F(StatsRecorderTest, AFailedWriteLeavesTheOldFileWhole) {
    ASSERT_FALSE(store.save({{host, sent(3)}}));
    start(first);
    letWritingFail();

    EXPECT_EQ(first->save(host, sent(4), forTheCrash), Saved::asTold);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(3))));
}

TEST_F(StatsRecorderTest, AFailedWriteIsMadeUpForByTheNextSaveOfTheSameFigures) {
    start(first);
    letWritingFail();
    first->save(host, sent(4), forTheCrash);
    letWritingSucceed();

    first->save(host, sent(4), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(4));
}

TEST_F(StatsRecorderTest, AFailedWriteAmongGoodOnesIsMadeUpForToo) {
    start(first);
    first->save(host, sent(3), forTheCrash);
    letWritingFail();
    first->save(host, sent(4), forTheCrash);
    letWritingSucceed();

    first->save(host, sent(4), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(4));
}

TEST_F(StatsRecorderTest, CannotRecordWhereNoFolderCanBeMade) {
    std::ofstream(store.url.parent_path()) << "in the way";

    EXPECT_EQ(start(first).state(), State::cannotRecord);
    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::asTold);
    EXPECT_EQ(fileText(store.url.parent_path()), "in the way");
}

TEST_F(StatsRecorderTest, RecordsAsSoonAsTheFolderCanBeMadeAndLosesNoCount) {
    std::ofstream(store.url.parent_path()) << "in the way";
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.parent_path());

    EXPECT_EQ(first->save(host, sent(2), forTheCrash), Saved::asTold);

    EXPECT_EQ(first->state(), State::records);
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, FiguresThatAppearedWhileItCouldNotRecordAreNotOverwritten) {
    std::ofstream(store.url.parent_path()) << "in the way";
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.parent_path());
    ASSERT_FALSE(store.save({{host, sent(100)}}));

    EXPECT_EQ(first->save(host, sent(2), forTheCrash), Saved::tookOver);

    EXPECT_EQ(first->figures(host), sent(100));
    EXPECT_EQ(store.load().at(host), sent(100));
}

TEST_F(StatsRecorderTest, AFolderThatWasEmptiedIsFilledAgain) {
    start(first).save(host, sent(1), forTheCrash);
    fs::remove_all(store.url.parent_path());

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(2));
}

// A file that can't be read.

struct Unreadable {
    std::string name;
    std::string text;

    friend void PrintTo(const Unreadable& param, std::ostream* out) { *out << param.name; }
};

class UnreadableFileTest : public StatsRecorderTest, public testing::WithParamInterface<Unreadable> {};

TEST_P(UnreadableFileTest, IsKeptAsideBeforeItIsOverwritten) {
    writeFile(GetParam().text);
    start(first);
    ASSERT_EQ(first->figures(host), StatCounter());

    first->save(host, sent(1), forTheCrash);

    EXPECT_EQ(fileText(store.url.string() + ".unreadable"), GetParam().text);
    EXPECT_EQ(store.load().at(host), sent(1));
}

INSTANTIATE_TEST_SUITE_P(
    StatsRecorderTest, UnreadableFileTest,
    testing::Values(
        Unreadable{"Text", "no JSON"}, Unreadable{"Nothing", ""}, Unreadable{"List", "[]"},
        Unreadable{"WrongCounter", R"({"host.test": 3})"},
        Unreadable{"Truncated", R"({"host.test": {"sent": 1, "replied": 1, "lost": 0)"},
        Unreadable{
            "MissingKey",
            R"({"host.test": {"averageMs": 1, "fastestMs": 1, "lost": 0, "replied": 1, "sent": 1}})"}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(StatsRecorderTest, AnUnreadableFileIsLeftAloneUntilTheFirstSave) {
    writeFile("no JSON");

    start(first);

    EXPECT_EQ(fileText(store.url), "no JSON");
    EXPECT_EQ(keptAside(), 0);
}

TEST_F(StatsRecorderTest, AReadableFileIsNotKeptAside) {
    ASSERT_FALSE(store.save({{host, sent(1)}}));

    start(first).save(host, sent(2), forTheCrash);

    EXPECT_EQ(keptAside(), 0);
}

TEST_F(StatsRecorderTest, LaterSavesKeepNothingMoreAside) {
    writeFile("no JSON");
    start(first);

    first->save(host, sent(1), forTheCrash);
    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(keptAside(), 1);
}

TEST_F(StatsRecorderTest, SavesThatFailKeepAnUnreadableFileAsideOnlyOnce) {
    writeFile("no JSON");
    start(first);
    letWritingFail();

    for (int save = 1; save <= 5; ++save) {
        first->save(host, sent(save), forTheCrash);
    }

    EXPECT_EQ(keptAside(), 1);
}

TEST_F(StatsRecorderTest, ASecondUnreadableFileIsKeptBesideTheFirst) {
    for (const std::string text : {"one", "two"}) {
        writeFile(text);
        start(first).save(host, sent(1), forTheCrash);
        first.reset();
    }

    EXPECT_EQ(fileText(store.url.string() + ".unreadable"), "one");
    EXPECT_EQ(fileText(store.url.string() + ".unreadable-2"), "two");
}

// Two recorders.

TEST_F(StatsRecorderTest, TheSecondOfTwoDoesNotRecord) {
    start(first);

    EXPECT_EQ(start(second).state(), State::otherRecords);
    EXPECT_EQ(first->state(), State::records);
}

TEST_F(StatsRecorderTest, WhileAnotherRecordsNothingIsWritten) {
    start(first).save(host, sent(10), forTheCrash);
    start(second);

    EXPECT_EQ(second->save(host, sent(11), forTheCrash), Saved::asTold);

    EXPECT_EQ(store.load().at(host), sent(10));
}

TEST_F(StatsRecorderTest, WhileAnotherRecordsItCountsOnInMemory) {
    start(first).save(host, sent(10), forTheCrash);
    start(second).save(host, sent(11), forTheCrash);

    EXPECT_EQ(second->figures(host), sent(11));
}

TEST_F(StatsRecorderTest, TakesOverFromTheFiguresOnDiskNeverOverThem) {
    start(first);
    start(second).save(host, sent(5), forTheCrash);
    first->save(host, sent(10), forTheCrash);
    first.reset();

    EXPECT_EQ(second->save(host, sent(6), forTheCrash), Saved::tookOver);

    EXPECT_EQ(second->state(), State::records);
    EXPECT_EQ(second->figures(host), sent(10));
    EXPECT_EQ(store.load().at(host), sent(10));
}

TEST_F(StatsRecorderTest, AfterATakeoverItWritesWhatItIsTold) {
    start(first).save(host, sent(10), forTheCrash);
    start(second);
    first.reset();
    second->save(host, sent(1), forTheCrash);

    EXPECT_EQ(second->save(host, sent(12), forTheCrash), Saved::asTold);

    EXPECT_EQ(store.load().at(host), sent(12));
}

TEST_F(StatsRecorderTest, ATakeoverDropsTheFiguresOfOtherHosts) {
    start(first).save(host, sent(10), forTheCrash);
    start(second).save(otherHost, sent(3), forTheCrash);
    first.reset();

    second->save(host, sent(1), forTheCrash);
    second->save(host, sent(11), forTheCrash);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(11))));
}

TEST_F(StatsRecorderTest, ATakeoverOfAnUnreadableFileKeepsItAside) {
    start(first);
    start(second);
    writeFile("no JSON");
    first.reset();
    second->save(host, sent(1), forTheCrash);

    second->save(host, sent(2), forTheCrash);

    EXPECT_EQ(fileText(store.url.string() + ".unreadable"), "no JSON");
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, TheOneThatEndsLastDoesNotUndoTheOneThatTookOver) {
    std::optional<StatsRecorder> third;
    start(first).save(host, sent(10), forTheCrash);
    start(second);
    start(third);
    first.reset();
    second->save(host, sent(1), forTheCrash);
    second->save(host, sent(20), forTheCrash);

    EXPECT_EQ(third->save(host, sent(2), forTheCrash), Saved::asTold);
    EXPECT_EQ(third->state(), State::otherRecords);
    EXPECT_EQ(store.load().at(host), sent(20));
}

} // namespace

} // namespace tarnwick
