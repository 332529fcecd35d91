// What a journal keeps, and how.
#include "platform/journal/SqliteJournal.h"

#include "platform/journal/Database.h"
#include "platform/journal/JournalTidying.h"
#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr std::int64_t minutesInADay = 1440;

class SqliteJournalTest : public testing::Test {
protected:
    TemporaryFolder folder;
    fs::path file = folder.path() / "Tarnwick" / "journal.sqlite";
    SqliteJournal journal{file};
};

TEST_F(SqliteJournalTest, GivesBackWhatWasWritten) {
    const Episode outage{
        .kind = Episode::Kind::outage,
        .start = minuteNumber(1),
        .end = minuteNumber(2),
        .verdict = Verdict{.blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "It is."},
        .address = "192.0.2.1",
        .interface = "eth0",
        .pingsLost = 12};
    const Episode degradation{.kind = Episode::Kind::degradation, .start = minuteNumber(3)};
    std::vector<Gap> gaps;
    for (const Gap::Kind kind : {Gap::Kind::asleep, Gap::Kind::notRunning, Gap::Kind::paused}) {
        gaps.push_back({.kind = kind, .span = minuteSpan(4 + static_cast<int>(kind), 1)});
    }
    Period minute = minuteOf(0, 20.125);
    minute.figures.watchedSeconds = 58.5;
    minute.figures.lost = 3;
    minute.figures.addAnswer(1234.5);
    minute.figures.addDifference(1214.375);

    ASSERT_TRUE(journal.write(
        {.host = journalHost,
         .minutes = {minute},
         .episodes = {outage, degradation},
         .gaps = gaps,
         .until = minuteNumber(8)}));

    const History history = allOf(journal);
    EXPECT_EQ(history.periods, std::vector{minute});
    EXPECT_EQ(history.episodes, (std::vector{outage, degradation}));
    EXPECT_EQ(history.gaps, gaps);
    EXPECT_EQ(history.until, minuteNumber(8));
    EXPECT_EQ(journal.state(), Journal::State::writes);
    EXPECT_EQ(journal.problem(), "");
}

TEST_F(SqliteJournalTest, KeepsItOverAnEndOfTheProgram) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    const History before = allOf(journal);

    {
        SqliteJournal ended(folder.path() / "other.sqlite");
        ASSERT_TRUE(ended.write(batchOf(0)));
    }
    SqliteJournal again(folder.path() / "other.sqlite");

    EXPECT_EQ(again.open(), Journal::State::writes);
    EXPECT_EQ(allOf(again).periods, before.periods);
    EXPECT_EQ(again.until(), minuteNumber(1));
}

TEST_F(SqliteJournalTest, AddsToAMinuteThatIsThere) {
    ASSERT_TRUE(journal.write(batchOf(0, 20)));
    ASSERT_TRUE(journal.write(batchOf(0, 500)));

    Period sum = minuteOf(0, 20);
    sum.figures.merge(minuteOf(0, 500).figures);
    EXPECT_EQ(allOf(journal).periods, std::vector{sum});
}

TEST_F(SqliteJournalTest, PutsAnEpisodeInThePlaceOfTheSameOne) {
    Episode outage{.start = minuteNumber(1), .address = "192.0.2.1"};
    ASSERT_TRUE(journal.write({.host = journalHost, .episodes = {outage}, .until = minuteNumber(1)}));
    outage.end = minuteNumber(5);
    outage.verdict = Verdict{.blame = Blame::wifi};
    ASSERT_TRUE(journal.write({.host = journalHost, .episodes = {outage}, .until = minuteNumber(5)}));

    EXPECT_EQ(allOf(journal).episodes, std::vector{outage});
}

TEST_F(SqliteJournalTest, KeepsHostsApart) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    Journal::Batch other = batchOf(1);
    other.host = "two.example";
    other.episodes = {{.start = minuteNumber(1)}};
    other.gaps = {{.span = minuteSpan(5, 1)}};
    ASSERT_TRUE(journal.write(other));

    const History history = allOf(journal);
    EXPECT_EQ(history.periods, std::vector{minuteOf(0)});
    EXPECT_TRUE(history.episodes.empty());
    EXPECT_EQ(history.gaps, other.gaps); // a gap is one for every host
    EXPECT_EQ(allOf(journal, "two.example").periods, std::vector{minuteOf(1)});
    EXPECT_TRUE(allOf(journal, "three.example").periods.empty());
}

TEST_F(SqliteJournalTest, NamesTheHostsThatSomethingIsKnownOf) {
    EXPECT_EQ(journal.hosts(), std::vector<std::string>{});

    Journal::Batch batch = batchOf(1);
    ASSERT_TRUE(journal.write(batch));
    batch.host = "another.example";
    ASSERT_TRUE(journal.write(batch));
    ASSERT_TRUE(journal.write(
        {.host = "down.example", .episodes = {{.start = minuteNumber(1)}}, .until = minuteNumber(2)}));
    ASSERT_TRUE(journal.write({.host = "new.example", .until = minuteNumber(2)}));

    const std::vector<std::string> known{"another.example", "down.example", journalHost};
    EXPECT_EQ(journal.hosts(), known);
    SqliteJournal reader(file);
    EXPECT_EQ(reader.hosts(), known);
}

TEST_F(SqliteJournalTest, ReadsOnlyWhatOverlapsTheSpan) {
    for (int minute = 0; minute < 10; ++minute) {
        ASSERT_TRUE(journal.write(batchOf(minute)));
    }
    const Gap early{.span = minuteSpan(0, 2)};
    const Gap late{.span = minuteSpan(3, 3)};
    const Episode over{.start = minuteNumber(2), .end = minuteNumber(4)};
    const Episode open{.start = minuteNumber(3), .address = "192.0.2.1"};
    const Episode later{.start = minuteNumber(5), .end = minuteNumber(6)};
    ASSERT_TRUE(journal.write(
        {.host = journalHost,
         .episodes = {over, open, later},
         .gaps = {early, late},
         .until = minuteNumber(10)}));

    const History history = journal.read(journalHost, minuteSpan(2, 3));
    EXPECT_EQ(history.periods, (std::vector{minuteOf(2), minuteOf(3), minuteOf(4)}));
    EXPECT_EQ(history.episodes, (std::vector{over, open}));
    EXPECT_EQ(history.gaps, std::vector{late});
    const Span half{.from = minuteNumber(2) + std::chrono::seconds(30), .to = minuteNumber(3)};
    EXPECT_EQ(journal.read(journalHost, half).periods, std::vector{minuteOf(2)});
}

TEST_F(SqliteJournalTest, HasNothingAtFirst) {
    EXPECT_TRUE(allOf(journal).periods.empty());
    EXPECT_EQ(journal.until(), std::nullopt);
    EXPECT_FALSE(fs::exists(file)) << "reading made it";
    EXPECT_EQ(journal.open(), Journal::State::writes);
    EXPECT_EQ(journal.until(), std::nullopt);
}

mode_t modeOf(const fs::path& path) {
    struct stat info{};

    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST_F(SqliteJournalTest, IsForItsUserAlone) {
    const mode_t before = ::umask(0);
    ASSERT_TRUE(journal.write(batchOf(0)));
    ::umask(before);

    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.string() + "-wal"), 0600U);
    EXPECT_EQ(modeOf(file.string() + "-shm"), 0600U);
    EXPECT_EQ(modeOf(file.string() + ".lock"), 0600U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
}

TEST_F(SqliteJournalTest, TakesAwayWhatOthersMayDo) {
    writeFile(file, "");
    ::chmod(file.c_str(), 0664);
    writeFile(file.string() + ".lock", "");
    ::chmod((file.string() + ".lock").c_str(), 0644);
    ASSERT_TRUE(journal.write(batchOf(0)));

    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.string() + ".lock"), 0600U);
}

TEST_F(SqliteJournalTest, EndsAnEpisodeThatWasLeftOpenWhereTheRecordingEnded) {
    const fs::path left = folder.path() / "left.sqlite";
    {
        SqliteJournal killed(left);
        Journal::Batch batch = batchOf(5);
        batch.episodes = {{.start = minuteNumber(3)}, {.start = minuteNumber(7)}};
        ASSERT_TRUE(killed.write(batch));
    }
    SqliteJournal next(left);
    EXPECT_EQ(allOf(next).episodes[0].end, std::nullopt) << "reading changed it";
    ASSERT_EQ(next.open(), Journal::State::writes);

    const History history = allOf(next);
    EXPECT_EQ(history.episodes[0].end, minuteNumber(6));
    EXPECT_EQ(history.episodes[1].end, minuteNumber(7)) << "the clock had been set back";
}

TEST_F(SqliteJournalTest, OpeningAgainEndsNoEpisodeOfItsOwn) {
    ASSERT_TRUE(journal.write(
        {.host = journalHost, .episodes = {{.start = minuteNumber(3)}}, .until = minuteNumber(4)}));
    ASSERT_EQ(journal.open(), Journal::State::writes);
    ASSERT_TRUE(journal.write(batchOf(5)));

    EXPECT_EQ(allOf(journal).episodes[0].end, std::nullopt);
}

TEST_F(SqliteJournalTest, BeginsANewFileWhenTheOneItHasWasRemoved) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    fs::remove(file);
    ASSERT_TRUE(journal.write(batchOf(1)));

    SqliteJournal reader(file);
    EXPECT_EQ(allOf(reader).periods, std::vector{minuteOf(1)});
}

TEST_F(SqliteJournalTest, MergesMinutesOfAWeekAgoToQuarterHours) {
    PeriodFigures sum;
    for (std::int64_t minute = 0; minute < 15; ++minute) {
        ASSERT_TRUE(journal.write(batchOf(minute, static_cast<double>(minute + 1))));
        sum.merge(minuteOf(minute, static_cast<double>(minute + 1)).figures);
    }
    ASSERT_TRUE(journal.write(batchOf(15)));
    ASSERT_TRUE(journal.write(batchOf(7 * minutesInADay + 20)));

    const History history = allOf(journal);
    ASSERT_EQ(history.periods.size(), 3U);
    EXPECT_EQ(
        history.periods[0],
        (Period{.start = minuteNumber(0), .length = PeriodLength::quarterHour, .figures = sum}));
    EXPECT_EQ(history.periods[1], minuteOf(15));
}

TEST_F(SqliteJournalTest, MergesQuarterHoursAndLateMinutesToHours) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    ASSERT_TRUE(journal.write(batchOf(20 * minutesInADay))); // the first one is of a quarter hour now
    ASSERT_TRUE(journal.write(batchOf(16)));                 // the clock was set back
    ASSERT_TRUE(journal.write(batchOf(100 * minutesInADay)));
    ASSERT_TRUE(journal.write(batchOf(17))); // again
    ASSERT_TRUE(journal.write(batchOf(100 * minutesInADay + 60)));

    const History history = allOf(journal);
    ASSERT_EQ(history.periods.size(), 4U);
    EXPECT_EQ(history.periods[0].start, minuteNumber(0));
    EXPECT_EQ(history.periods[0].length, PeriodLength::hour);
    EXPECT_EQ(history.periods[0].figures.replied, 36);
    EXPECT_EQ(history.periods[0].figures.watchedSeconds, 180);
}

TEST_F(SqliteJournalTest, TidiesOnceAnHour) {
    const std::int64_t week = 7 * minutesInADay;
    ASSERT_TRUE(journal.write(batchOf(0)));
    ASSERT_TRUE(journal.write(batchOf(week + 1))); // the quarter hour is not old enough yet
    ASSERT_TRUE(journal.write(batchOf(week + 20)));
    EXPECT_EQ(allOf(journal).periods[0].length, PeriodLength::minute);
    ASSERT_TRUE(journal.write(batchOf(week + 60)));
    EXPECT_EQ(allOf(journal).periods[0].length, PeriodLength::quarterHour);
}

TEST_F(SqliteJournalTest, ForgetsWhatIsOlderThanTwoYears) {
    const std::int64_t twoYears = 730 * minutesInADay;
    Journal::Batch old = batchOf(0);
    old.host = "forgotten.example";
    old.episodes = {{.start = minuteNumber(0), .end = minuteNumber(1)}};
    old.gaps = {{.span = minuteSpan(1, 1)}};
    ASSERT_TRUE(journal.write(old));
    Journal::Batch young = batchOf(120);
    young.episodes = {{.start = minuteNumber(0), .end = minuteNumber(120)}};
    young.gaps = {{.span = minuteSpan(2, 118)}};
    ASSERT_TRUE(journal.write(young));
    ASSERT_TRUE(journal.write(batchOf(twoYears + 60)));

    EXPECT_TRUE(allOf(journal, "forgotten.example").periods.empty());
    EXPECT_TRUE(allOf(journal, "forgotten.example").episodes.empty());
    const History history = allOf(journal);
    ASSERT_EQ(history.periods.size(), 2U);
    EXPECT_EQ(history.periods[0].start, minuteNumber(120));
    EXPECT_EQ(history.episodes, young.episodes);
    EXPECT_EQ(history.gaps, young.gaps);
}

TEST_F(SqliteJournalTest, KeepsTheLatestOfTooManyEpisodesAndGaps) {
    constexpr std::int64_t surplus = 100;
    Journal::Batch many = batchOf(0);
    for (std::int64_t number = 0; number < JournalTidying::mostRows + surplus; ++number) {
        const Span span = minuteSpan(number, 1);
        many.episodes.push_back({.start = span.from, .end = span.to});
        many.gaps.push_back({.span = span});
    }
    ASSERT_TRUE(journal.write(many));

    const History history = allOf(journal);
    ASSERT_EQ(history.episodes.size(), JournalTidying::mostRows);
    EXPECT_EQ(history.episodes.front().start, minuteNumber(surplus));
    ASSERT_EQ(history.gaps.size(), JournalTidying::mostRows);
    EXPECT_EQ(history.gaps.front().span.from, minuteNumber(surplus));
}

/// Whether any file in the folder has these bytes.
bool anyFileHas(const fs::path& folder, const std::string& bytes) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (contentOf(entry.path()).find(bytes) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST_F(SqliteJournalTest, ClearedIsEmptyForGood) {
    Journal::Batch batch = batchOf(0);
    batch.episodes = {{.start = minuteNumber(0), .address = "192.0.2.77"}};
    batch.gaps = {{.span = minuteSpan(0, 1)}};
    ASSERT_TRUE(journal.write(batch));
    ASSERT_TRUE(anyFileHas(file.parent_path(), "192.0.2.77"));

    EXPECT_TRUE(journal.clear());

    EXPECT_FALSE(anyFileHas(file.parent_path(), "192.0.2.77"));
    EXPECT_FALSE(anyFileHas(file.parent_path(), journalHost));
    EXPECT_TRUE(allOf(journal).periods.empty());
    EXPECT_TRUE(allOf(journal).episodes.empty());
    EXPECT_TRUE(allOf(journal).gaps.empty());
    EXPECT_EQ(journal.until(), std::nullopt);
    ASSERT_TRUE(journal.write(batchOf(1)));
    EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(1)});
}

TEST_F(SqliteJournalTest, ClearedNothingIsLeftOfWhatAReaderStillSees) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    {
        Database reader(file, Database::Access::read, 0);
        ASSERT_TRUE(reader.execute("BEGIN"));
        ASSERT_EQ(reader.number("SELECT count(*) FROM periods"), 1); // and goes on with what it sees
        EXPECT_TRUE(journal.clear());
        ASSERT_EQ(reader.number("SELECT count(*) FROM periods"), 1);
    }
    EXPECT_FALSE(anyFileHas(file.parent_path(), journalHost));
    ASSERT_TRUE(journal.write(batchOf(1)));
    EXPECT_EQ(allOf(journal).periods, std::vector{minuteOf(1)});
}

TEST_F(SqliteJournalTest, ClearingBesideTheWriterTellsThatSomethingMayBeLeft) {
    ASSERT_TRUE(journal.write(batchOf(0)));
    SqliteJournal other(file);
    {
        Database reader(file, Database::Access::read, 0);
        ASSERT_TRUE(reader.execute("BEGIN"));
        ASSERT_EQ(reader.number("SELECT count(*) FROM periods"), 1);
        EXPECT_FALSE(other.clear());
        EXPECT_TRUE(anyFileHas(file.parent_path(), journalHost));
    }
    EXPECT_TRUE(other.clear());
    EXPECT_FALSE(anyFileHas(file.parent_path(), journalHost));
}

TEST_F(SqliteJournalTest, StoresTheNamesThatProgramsKnow) {
    Journal::Batch batch = batchOf(0);
    batch.episodes = {
        {.kind = Episode::Kind::outage, .start = minuteNumber(0), .verdict = Verdict{}},
        {.kind = Episode::Kind::degradation, .start = minuteNumber(1)}};
    batch.gaps = {
        {.kind = Gap::Kind::asleep, .span = minuteSpan(1, 1)},
        {.kind = Gap::Kind::notRunning, .span = minuteSpan(2, 1)},
        {.kind = Gap::Kind::paused, .span = minuteSpan(3, 1)}};
    ASSERT_TRUE(journal.write(batch));

    Database reader(file, Database::Access::read, 0);
    EXPECT_EQ(
        reader.text("SELECT group_concat(kind) FROM (SELECT kind FROM gaps ORDER BY start)"),
        "asleep,notRunning,paused");
    EXPECT_EQ(
        reader.text("SELECT group_concat(kind) FROM (SELECT kind FROM episodes ORDER BY start)"),
        "outage,degradation");
    EXPECT_EQ(
        reader.text(
            "SELECT blame || ',' || likelihood FROM episodes WHERE start = "
            + std::to_string(minuteNumber(0).time_since_epoch().count())),
        "unclear,possible");
}

TEST_F(SqliteJournalTest, ClearingMakesNoFile) {
    EXPECT_TRUE(journal.clear());
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(SqliteJournalTest, LiesInTheFolderOfState) {
    ::setenv("XDG_STATE_HOME", "/srv/state", 1);

    EXPECT_EQ(SqliteJournal::defaultPath(), "/srv/state/Tarnwick/journal.sqlite");
    ::unsetenv("XDG_STATE_HOME");
}

} // namespace
} // namespace tarnwick
