// Processes that share the statistics file, started, ended and killed in any order: no recorded count is
// lost.
#include "app/Monitor/StatsRecorder.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <rapidcheck.h>
#include <signal.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

using test::TemporaryFolder;
using State = StatsRecorder::State;

constexpr auto sharedHost = "host.test";

/// A process that counts, and saves its counter.
class Counting {
public:
    explicit Counting(const StatsStore& store) : recorder_(store) {
        recorder_.load();
        counter_ = recorder_.counterOf(sharedHost);
    }

    void count() { counter_.addPingSent(); }

    /// True when the figures are on disk now.
    bool save() {
        if (recorder_.save(sharedHost, counter_, FileStore::Durability::crash)
            == StatsRecorder::Saved::tookOver) {
            counter_ = recorder_.counterOf(sharedHost);
        }
        return recorder_.state() == State::records;
    }

    [[nodiscard]] std::int64_t counted() const { return counter_.sent; }

    [[nodiscard]] State state() const { return recorder_.state(); }

private:
    StatsRecorder recorder_;
    StatCounter counter_;
};

std::int64_t onDisk(const StatsStore& store) {
    const StatsByHost figures = store.load();
    const auto found = figures.find(sharedHost);
    return found != figures.end() ? found->second.sent : 0;
}

// In any order.

enum class Deed { start, count, save, end, kill };

struct Step {
    std::size_t who;
    Deed deed;

    friend std::ostream& operator<<(std::ostream& out, const Step& step) {
        constexpr std::array names{"starts", "counts", "saves", "ends", "is killed"};
        return out << step.who << ' ' << names.at(static_cast<std::size_t>(step.deed));
    }
};

rc::Gen<Step> anyStep() {
    return rc::gen::build<Step>(
        rc::gen::set(&Step::who, rc::gen::inRange<std::size_t>(0, 3)),
        rc::gen::set(
            &Step::deed, rc::gen::element(
                             Deed::start, Deed::start, Deed::count, Deed::count, Deed::count, Deed::save,
                             Deed::save, Deed::end, Deed::kill)));
}

/// Three processes, and what has to be on disk because one of them was told that it is recorded.
class Processes {
public:
    void take(const Step& step) {
        auto& process = processes_.at(step.who);
        if (step.deed == Deed::start) {
            process.reset(); // else it would wait for its own lock
            process.emplace(store_);
            return;
        }
        if (!process) {
            return;
        }
        switch (step.deed) {
        case Deed::count:
            process->count();
            break;
        case Deed::save:
            save(*process);
            break;
        case Deed::end:
            save(*process);
            process.reset();
            break;
        default:
            process.reset();
        }
    }

    void check() const {
        RC_ASSERT(onDisk(store_) == recorded_);
        RC_ASSERT(
            std::ranges::count_if(
                processes_, [](const auto& process) { return process && process->state() == State::records; })
            <= 1);
    }

private:
    void save(Counting& process) {
        if (!process.save()) {
            return;
        }
        RC_ASSERT(process.counted() >= recorded_);
        recorded_ = process.counted();
    }

    test::TemporaryFolder folder_;
    StatsStore store_{folder_.path() / "stats.json"};
    std::array<std::optional<Counting>, 3> processes_;
    std::int64_t recorded_ = 0;
};

TEST(StatsRecorderSharingTest, NoOrderOfStartsSavesEndsAndKillsLosesARecordedCount) {
    EXPECT_TRUE(rc::check("recorded counts stay", [] {
        const auto steps = *rc::gen::container<std::vector<Step>>(anyStep());
        Processes processes;
        for (const Step& step : steps) {
            processes.take(step);
            processes.check();
        }
    }));
}

// With real processes, really killed.

/// A child that counts and saves as fast as it can, and reports each figure that it knows to be on disk.
class CountingChild {
public:
    explicit CountingChild(const StatsStore& store) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) {
            throw std::runtime_error("no pipe");
        }
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(ends[0]);
            countForEver(store, ends[1]);
        }
        ::close(ends[1]);
        reports_ = ends[0];
    }

    CountingChild(const CountingChild&) = delete;
    CountingChild& operator=(const CountingChild&) = delete;

    ~CountingChild() {
        kill();
        ::close(reports_);
    }

    /// Waits for the next figure; the latest one when the child is gone.
    std::int64_t nextReport() {
        std::int64_t report = 0;
        if (::read(reports_, &report, sizeof report) == sizeof report) {
            latest_ = report;
            return latest_;
        }
        isGone_ = true;
        return latest_;
    }

    void kill() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
            pid_ = -1;
        }
    }

    /// The last figure that it reported before it was killed.
    std::int64_t lastReport() {
        while (!isGone_) {
            nextReport();
        }
        return latest_;
    }

private:
    [[noreturn]] static void countForEver(const StatsStore& store, int reports) {
        ::alarm(60); // should the parent be gone without killing it
        Counting counting(store);
        for (;;) {
            counting.count();
            const std::int64_t figure = counting.save() ? counting.counted() : 0;
            if (::write(reports, &figure, sizeof figure) != sizeof figure) {
                ::_exit(1);
            }
        }
    }

    pid_t pid_ = -1;
    int reports_ = -1;
    std::int64_t latest_ = 0;
    bool isGone_ = false;
};

class KilledProcessTest : public testing::Test {
protected:
    test::TemporaryFolder folder;
    StatsStore store{folder.path() / "stats.json"};
};

TEST_F(KilledProcessTest, AKillAtAnyMomentLosesNoRecordedCount) {
    constexpr int rounds = 20;
    std::int64_t recorded = 0;
    for (int round = 1; round <= rounds; ++round) {
        CountingChild child(store);
        for (int report = 0; report < round; ++report) {
            child.nextReport();
        }
        child.kill();
        const std::int64_t reported = child.lastReport();

        EXPECT_GE(reported, recorded + round);
        // The kill may have come between the saving and the report.
        EXPECT_GE(onDisk(store), reported);
        EXPECT_LE(onDisk(store), reported + 1);
        recorded = onDisk(store);
    }
}

TEST_F(KilledProcessTest, AKilledWritersLockIsFreeAtOnce) {
    CountingChild child(store);
    child.nextReport();
    Counting survivor(store);
    ASSERT_EQ(survivor.state(), State::otherRecords);

    child.kill();
    const std::int64_t recorded = child.lastReport();
    survivor.save();

    EXPECT_EQ(survivor.state(), State::records);
    EXPECT_GE(survivor.counted(), recorded);
}

TEST_F(KilledProcessTest, OfTwoAtOnceTheSurvivorTakesOverAndCountsOn) {
    CountingChild writer(store);
    writer.nextReport();
    CountingChild waiting(store);
    ASSERT_EQ(waiting.nextReport(), 0);

    writer.kill();
    const std::int64_t recorded = writer.lastReport();
    std::int64_t figure = 0;
    while (figure == 0) { // until it has taken over
        figure = waiting.nextReport();
    }
    const std::int64_t next = waiting.nextReport();
    waiting.kill();

    EXPECT_GE(figure, recorded);
    EXPECT_EQ(next, figure + 1);
    EXPECT_GE(onDisk(store), next);
}

} // namespace

} // namespace tarnwick
