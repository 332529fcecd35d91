// How large a journal becomes.
#include "platform/journal/SqliteJournal.h"

#include "tests/platform/journal/SomeBatches.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr std::int64_t minutesOfADay = 1440;
constexpr std::uintmax_t largestJournal = 25'000'000; ///< bytes

/// A minute with a ping a second over a line that is now quick, now slow, now lossy.
PeriodFigures busyMinute(std::mt19937& random) {
    std::lognormal_distribution<double> latency(3.5, 0.6); // 33 ms in the middle
    std::bernoulli_distribution isLost(0.02);
    PeriodFigures figures{.watchedSeconds = 60, .sent = 60};
    for (int ping = 0; ping < 60; ++ping) {
        if (isLost(random)) {
            ++figures.lost;
        } else {
            figures.addAnswer(latency(random));
            figures.addDifference(latency(random));
        }
    }
    return figures;
}

std::uintmax_t bytesIn(const fs::path& folder) {
    std::uintmax_t sum = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        sum += entry.file_size();
    }
    return sum;
}

/// A night's sleep, and ten bad moments.
void addBadMoments(Journal::Batch& batch, std::int64_t day) {
    batch.gaps = {{.kind = Gap::Kind::asleep, .span = minuteSpan(day * minutesOfADay, 400)}};
    for (int bad = 0; bad < 10; ++bad) {
        const Span span = minuteSpan(day * minutesOfADay + 500 + bad * 50, 2);
        batch.episodes.push_back(
            {.start = span.from,
             .end = span.to,
             .verdict =
                 Verdict{
                     .blame = Blame::provider,
                     .likelihood = Likelihood::likely,
                     .evidence = "Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
             .address = "2001:db8::1:2:3:4",
             .interface = "wlp0s20f3",
             .pingsLost = 120});
    }
}

TEST(JournalSize, StaysSmallWithAllThatIsKept) {
    constexpr std::int64_t hoursUntil = 640;        // from then on minutes are written, before that hours
    constexpr std::int64_t days = hoursUntil + 100; // more than is kept of either
    const TemporaryFolder folder;
    std::mt19937 random(15); // NOLINT(cert-msc51-cpp): the same every time
    std::vector<PeriodFigures> minutes;
    for (int number = 0; number < 500; ++number) {
        minutes.push_back(busyMinute(random));
    }
    std::vector<PeriodFigures> hours;
    for (std::size_t number = 0; number < 50; ++number) {
        PeriodFigures& hour = hours.emplace_back();
        for (std::size_t minute = 0; minute < 60; ++minute) {
            hour.merge(minutes[(number * 7 + minute) % minutes.size()]);
        }
    }
    SqliteJournal journal(folder.path() / "journal.sqlite");
    std::uintmax_t largest = 0;
    for (std::int64_t day = 0; day < days; ++day) {
        const bool isOfHours = day < hoursUntil;
        const std::vector<PeriodFigures>& figures = isOfHours ? hours : minutes;
        Journal::Batch batch{.host = journalHost, .until = minuteNumber((day + 1) * minutesOfADay)};
        for (std::int64_t minute = 0; minute < minutesOfADay; minute += isOfHours ? 60 : 1) {
            batch.minutes.push_back(
                {.start = minuteNumber(day * minutesOfADay + minute),
                 .length = isOfHours ? PeriodLength::hour : PeriodLength::minute,
                 .figures = figures[static_cast<std::size_t>(minute) % figures.size()]});
        }
        addBadMoments(batch, day);
        ASSERT_TRUE(journal.write(batch)) << journal.problem();
        largest = std::max(largest, bytesIn(folder.path()));
    }
    EXPECT_LT(largest, largestJournal);
    RecordProperty("bytes", std::to_string(largest));
    EXPECT_EQ(allOf(journal).periods.size(), 7U * minutesOfADay + 83U * 96 + 640U * 24);
}

} // namespace
} // namespace tarnwick
