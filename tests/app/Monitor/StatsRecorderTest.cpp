// The recorder of the all-time figures: failures, and what is written when.
#include "tests/app/Monitor/StatsRecorderTest.h"

#include "tests/support/CaseName.h"

#include <fstream>
#include <gmock/gmock.h>
#include <vector>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;
using Saved = StatsRecorder::Saved;
using State = StatsRecorder::State;

TEST_F(StatsRecorderTest, CannotRecordBeforeItHasLoaded) {
    EXPECT_EQ(StatsRecorder(store).state(), State::cannotRecord);
}

TEST_F(StatsRecorderTest, AloneItRecords) {
    EXPECT_EQ(start(first).state(), State::records);
}

TEST_F(StatsRecorderTest, AHostThatIsNotInTheFileHasAnEmptyCounter) {
    EXPECT_EQ(start(first).counterOf(host), StatCounter());
}

TEST_F(StatsRecorderTest, ReadsTheFiguresOfEveryHost) {
    ASSERT_FALSE(store.save({{host, sent(3)}, {otherHost, sent(5)}}));

    start(first);

    EXPECT_EQ(first->counterOf(host), sent(3));
    EXPECT_EQ(first->counterOf(otherHost), sent(5));
}

TEST_F(StatsRecorderTest, LoadingWritesNothing) {
    start(first);

    EXPECT_FALSE(fs::exists(store.url));
}

TEST_F(StatsRecorderTest, SavingKeepsTheOtherHosts) {
    ASSERT_FALSE(store.save({{otherHost, sent(5)}}));
    start(first);

    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::kept);

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

TEST_F(StatsRecorderTest, ChangedFiguresAreWritten) {
    start(first);
    first->save(host, sent(1), forTheCrash);

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, UnchangedFiguresAreWrittenAgainOnlyToOutliveMore) {
    start(first);
    std::vector<bool> isWritten;
    for (const auto durability : {forTheCrash, forTheCrash, forThePowerCut, forTheCrash, forThePowerCut}) {
        const ino_t before = fileNumber();
        first->save(host, sent(1), durability);
        isWritten.push_back(fileNumber() != before);
    }

    EXPECT_THAT(isWritten, ElementsAre(true, false, true, false, false));
}

// Failures.

TEST_F(StatsRecorderTest, AFailedWriteLeavesTheOldFileWhole) {
    ASSERT_FALSE(store.save({{host, sent(3)}}));
    start(first);
    letWritingFail();

    EXPECT_EQ(first->save(host, sent(4), forTheCrash), Saved::kept);

    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(3))));
}

TEST_F(StatsRecorderTest, AFailedWriteIsMadeUpForByTheNextSaveOfTheSameFigures) {
    start(first);
    for (const int count : {3, 4}) { // the first write, and one after a good one
        letWritingFail();
        first->save(host, sent(count), forTheCrash);
        letWritingSucceed();

        first->save(host, sent(count), forTheCrash);

        EXPECT_EQ(store.load().at(host), sent(count));
    }
}

TEST_F(StatsRecorderTest, CannotRecordWhereNoFolderCanBeMade) {
    std::ofstream(store.url.parent_path()) << "in the way";

    EXPECT_EQ(start(first).state(), State::cannotRecord);
    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::kept);
    EXPECT_EQ(test::contentOf(store.url.parent_path()), "in the way");
}

TEST_F(StatsRecorderTest, RecordsAsSoonAsTheFolderCanBeMadeAndLosesNoCount) {
    std::ofstream(store.url.parent_path()) << "in the way";
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.parent_path());

    EXPECT_EQ(first->save(host, sent(2), forTheCrash), Saved::kept);

    EXPECT_EQ(first->state(), State::records);
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, FiguresThatAppearedWhileItCouldNotRecordAreNotOverwritten) {
    std::ofstream(store.url.parent_path()) << "in the way";
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.parent_path());
    ASSERT_FALSE(store.save({{host, sent(100)}}));

    EXPECT_EQ(first->save(host, sent(2), forTheCrash), Saved::tookOver);

    EXPECT_EQ(first->counterOf(host), sent(100));
    EXPECT_EQ(store.load().at(host), sent(100));
}

TEST_F(StatsRecorderTest, AnUnreadableFileThatAppearedWhileItCouldNotRecordIsKeptAside) {
    std::ofstream(store.url.parent_path()) << "in the way";
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.parent_path());
    writeFile("no JSON");

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), "no JSON");
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, AFolderThatWasEmptiedIsFilledAgain) {
    start(first).save(host, sent(1), forTheCrash);
    fs::remove_all(store.url.parent_path());

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, OfTooManyHostsTheCurrentOneIsStored) {
    StatsByHost many;
    for (std::size_t number = 0; number < StatsStore::mostHosts; ++number) {
        many[std::to_string(number) + ".test"] = sent(100);
    }
    ASSERT_FALSE(store.save(many));
    start(first);

    first->save(host, sent(1), forTheCrash);

    const StatsByHost stored = store.load();
    EXPECT_EQ(stored.size(), StatsStore::mostHosts);
    EXPECT_TRUE(stored.contains(host));
    EXPECT_EQ(first->surplus(), 1U);
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
    ASSERT_EQ(first->counterOf(host), StatCounter());

    first->save(host, sent(1), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), GetParam().text);
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
    test::caseName);

TEST_F(StatsRecorderTest, FiguresThatCouldNotBeReadForAMomentAreNotOverwritten) {
    ASSERT_FALSE(store.save({{host, sent(100)}, {otherHost, sent(5)}}));
    letReadingFail();
    start(first);
    letReadingSucceed();

    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::tookOver);

    EXPECT_EQ(first->counterOf(host), sent(100));
    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(100)), Pair(otherHost, sent(5))));
    EXPECT_EQ(keptAside(), 0);
}

TEST_F(StatsRecorderTest, FiguresThatComeAfterTheStartAreNotOverwritten) {
    start(first);
    ASSERT_FALSE(store.save({{host, sent(31'000'000)}, {otherHost, sent(5)}}));

    EXPECT_EQ(first->save(host, sent(1), forTheCrash), Saved::tookOver);

    EXPECT_EQ(first->counterOf(host), sent(31'000'000));
    EXPECT_THAT(store.load(), UnorderedElementsAre(Pair(host, sent(31'000'000)), Pair(otherHost, sent(5))));
}

TEST_F(StatsRecorderTest, FiguresRestoredWhileItRecordsAreNotOverwritten) {
    start(first).save(host, sent(1), forTheCrash);
    ASSERT_FALSE(store.save({{host, sent(100)}}));

    EXPECT_EQ(first->save(host, sent(2), forTheCrash), Saved::tookOver);
    EXPECT_EQ(first->save(host, sent(101), forTheCrash), Saved::kept);

    EXPECT_EQ(store.load().at(host), sent(101));
}

TEST_F(StatsRecorderTest, AnUnreadableFileThatComesAfterTheStartIsKeptAside) {
    start(first).save(host, sent(1), forTheCrash);
    writeFile("no JSON");

    first->save(host, sent(2), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), "no JSON");
    EXPECT_EQ(store.load().at(host), sent(2));
}

TEST_F(StatsRecorderTest, GoesOnFromTheFlushedFiguresWhenAPowerCutSpoiledTheFile) {
    start(first).save(host, sent(10), forThePowerCut);
    first->save(host, sent(20), forTheCrash);
    first.reset();
    writeFile("");

    EXPECT_EQ(start(second).counterOf(host), sent(10));
    second->save(host, sent(11), forTheCrash);

    EXPECT_EQ(store.load().at(host), sent(11));
    EXPECT_EQ(keptAside(), 1);
}

TEST_F(StatsRecorderTest, AnUnreadableFileOfAnotherWriterIsReplacedByUnchangedFigures) {
    start(first).save(host, sent(1), forTheCrash);
    fs::remove(store.url.string() + ".lock");
    writeFile("no JSON");

    first->save(host, sent(1), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), "no JSON");
    EXPECT_EQ(store.load().at(host), sent(1));
}

TEST_F(StatsRecorderTest, AnUnreadableFileIsLeftAloneUntilTheFirstSave) {
    writeFile("no JSON");

    start(first);

    EXPECT_EQ(test::contentOf(store.url), "no JSON");
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

TEST_F(StatsRecorderTest, AnUnreadableFileThatCanNotBeKeptAsideIsNotOverwritten) {
    for (int number = 1; number <= 99; ++number) {
        writeFile("no JSON");
        start(first).save(host, sent(1), forTheCrash);
        first.reset();
    }
    ASSERT_EQ(keptAside(), 99);
    writeFile("one too many");

    start(first).save(host, sent(1), forTheCrash);

    EXPECT_EQ(test::contentOf(store.url), "one too many");
}

TEST_F(StatsRecorderTest, ASecondUnreadableFileIsKeptBesideTheFirst) {
    for (const std::string text : {"one", "two"}) {
        writeFile(text);
        start(first).save(host, sent(1), forTheCrash);
        first.reset();
    }

    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable"), "one");
    EXPECT_EQ(test::contentOf(store.url.string() + ".unreadable-2"), "two");
}

} // namespace

} // namespace tarnwick
