// When the journal is written to, and what becomes of what it does not take.
#include "tests/app/Recorder/RecorderWorld.h"

namespace tarnwick {
namespace {

class RecorderWriting : public test::RecorderWorld {
protected:
    void start() { recorder.start(test::recordedHost); }

    [[nodiscard]] std::int64_t pingsKept() {
        std::int64_t sum = 0;
        for (const Period& minute : journal.read(test::recordedHost, {}).periods) {
            sum += minute.figures.sent;
        }
        return sum;
    }
};

TEST_F(RecorderWriting, WaitsWithTheJournalForTheFirstTick) {
    start();
    recorder.pingSent(1, true);
    recorder.pingReplied(1, 20, true);
    EXPECT_EQ(journal.opened, 0);

    recorder.tick();
    EXPECT_EQ(journal.opened, 1);
    pass(30);
    EXPECT_EQ(journal.opened, 1);
}

TEST_F(RecorderWriting, HappensOnceAMinute) {
    start();
    pass(3601);

    EXPECT_EQ(journal.batches.size(), 60U);
    EXPECT_GE(pingsKept(), 3600);
}

TEST_F(RecorderWriting, HappensWhenTheMachineFallsAsleep) {
    start();
    pass(10);
    recorder.interrupt(Gap::Kind::asleep);

    EXPECT_EQ(pingsKept(), 10);
}

TEST_F(RecorderWriting, HappensAtTheStop) {
    start();
    pass(10);
    recorder.stop();

    EXPECT_EQ(pingsKept(), 10);
}

TEST_F(RecorderWriting, ThatFailsIsTakenAlongByTheNext) {
    start();
    pass(30);
    journal.setState(Journal::State::cannotWrite);
    pass(3600);
    ASSERT_EQ(pingsKept(), 0);
    journal.setState(Journal::State::writes);
    pass(60);

    EXPECT_GE(pingsKept(), 3630);
    EXPECT_TRUE(kept().gaps.empty());
}

TEST_F(RecorderWriting, ThatFailsForTwoHostsIsTakenAlongForBoth) {
    start();
    journal.setState(Journal::State::cannotWrite);
    pass(70);
    recorder.setHost("two.example");
    pass(70);
    journal.setState(Journal::State::writes);

    EXPECT_EQ(kept().periods.at(0).figures.sent, 60);
    EXPECT_EQ(kept("two.example").periods.at(0).figures.sent, 50);
    EXPECT_EQ(kept("two.example").until, after(140));
}

TEST_F(RecorderWriting, ThatFailsForDaysKeepsTheLastDay) {
    start();
    journal.setState(Journal::State::cannotWrite);
    pass(3 * 86'400);
    journal.setState(Journal::State::writes);

    const History history = kept();
    EXPECT_LE(history.periods.size(), 1442U);
    EXPECT_GE(history.periods.size(), 1438U);
    EXPECT_EQ(history.periods.back().span().to, after(3 * 86'400));
}

TEST_F(RecorderWriting, ThatFailsKeepsABoundedNumberOfOutages) {
    start();
    journal.setState(Journal::State::cannotWrite);
    for (int outage = 0; outage < 1500; ++outage) {
        pass(1);
        recorder.follow({.trouble = Trouble::down});
        pass(1);
        recorder.follow({.trouble = Trouble::none});
    }
    journal.setState(Journal::State::writes);

    const History history = kept();
    EXPECT_EQ(history.episodes.size(), 1440U);
    EXPECT_EQ(history.episodes.back().end, after(3000));
}

TEST_F(RecorderWriting, ThatFailsForDaysKeepsTheLastDayOfAllHosts) {
    start();
    journal.setState(Journal::State::cannotWrite);
    pass(80'000);
    recorder.setHost("two.example");
    pass(20'000);
    journal.setState(Journal::State::writes);

    const std::size_t periods = kept().periods.size() + kept("two.example").periods.size();
    EXPECT_LE(periods, 1443U);
    EXPECT_GE(periods, 1438U);
    EXPECT_GE(kept("two.example").periods.size(), 333U);
}

TEST_F(RecorderWriting, OfAnOutageThatFailsIsTakenAlongAsItIsThen) {
    start();
    pass(5);
    journal.setState(Journal::State::cannotWrite);
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    answered();
    recorder.follow(stateOf(Trouble::none));
    journal.setState(Journal::State::writes);
    recorder.save();

    ASSERT_EQ(journal.batches.size(), 1U);
    ASSERT_EQ(journal.batches[0].episodes.size(), 1U);
    EXPECT_EQ(journal.batches[0].episodes[0].end, after(15));
}

TEST_F(RecorderWriting, IsLeftToAnotherProgram) {
    journal.setState(Journal::State::otherWrites);
    start();
    pass(600);
    EXPECT_TRUE(journal.batches.empty());

    journal.setUntil(after(590)); // the other one has ended
    journal.setState(Journal::State::writes);
    pass(60);

    const std::vector<Gap> gaps = kept().gaps;
    EXPECT_LE(pingsKept(), 60) << "minutes of the other one were recorded twice";
    EXPECT_GT(pingsKept(), 50);
    EXPECT_EQ(
        gaps,
        (std::vector{Gap{.kind = Gap::Kind::notRunning, .span = {.from = after(590), .to = after(600)}}}));
}

TEST_F(RecorderWriting, TakesOverAnOutageThatLasts) {
    journal.setState(Journal::State::otherWrites);
    start();
    passSilent(20);
    recorder.follow(stateOf(Trouble::down));
    passSilent(60, false);
    journal.setState(Journal::State::writes);
    passSilent(60, false);

    EXPECT_EQ(kept().episodes.at(0).start, after(0));
    EXPECT_EQ(kept().episodes.at(0).end, std::nullopt);
}

TEST_F(RecorderWriting, TakesOverAnOutageFromWhereTheOtherProgramLeftIt) {
    journal.setState(Journal::State::otherWrites);
    start();
    passSilent(20);
    recorder.follow(stateOf(Trouble::down));
    passSilent(90, false);
    journal.setUntil(after(100));
    journal.setState(Journal::State::writes);
    passSilent(60, false);

    EXPECT_EQ(kept().episodes.at(0).start, after(100));
}

TEST_F(RecorderWriting, SaysWhyItFails) {
    start();
    EXPECT_EQ(recorder.problem(), "");
    journal.setState(Journal::State::cannotWrite);
    EXPECT_EQ(recorder.problem(), "The history is not stored: no space.");
    journal.setState(Journal::State::newerFile);
    EXPECT_EQ(recorder.problem(), "The history is not stored: it is of a newer version.");
    journal.setState(Journal::State::otherWrites);
    EXPECT_EQ(recorder.problem(), "");
    recorder.stop();
    journal.setState(Journal::State::cannotWrite);
    EXPECT_EQ(recorder.problem(), "");
}

TEST_F(RecorderWriting, IsNoneInAFileOfANewerVersion) {
    journal.setState(Journal::State::newerFile);
    start();
    pass(600);

    EXPECT_TRUE(journal.batches.empty());
}

TEST_F(RecorderWriting, BeginsOnceTheJournalCanBeOpened) {
    journal.setState(Journal::State::cannotWrite);
    journal.setUntil(after(-100));
    start();
    pass(90);
    journal.setState(Journal::State::writes);
    pass(60);

    EXPECT_GE(pingsKept(), 90);
    EXPECT_EQ(
        kept().gaps,
        (std::vector{Gap{.kind = Gap::Kind::notRunning, .span = {.from = after(-100), .to = after(0)}}}));
}

} // namespace
} // namespace tarnwick
