// How outages and degradations become episodes of the journal.
#include "tests/app/Recorder/RecorderWorld.h"

namespace tarnwick {
namespace {

const Verdict provider{.blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "It is."};

class RecorderEpisodes : public test::RecorderWorld {
protected:
    RecorderEpisodes() { recorder.start(test::recordedHost); }

    /// Ten good seconds, then silence, down after twelve seconds of it, back at 40 s.
    void outage() {
        pass(10);
        passSilent(12);
        recorder.follow(stateOf(Trouble::down));
        passSilent(18, false);
        answered();
        recorder.follow(stateOf(Trouble::none));
    }

    void degradedFor(int seconds) {
        for (int second = 0; second < seconds; ++second) {
            recorder.follow(stateOf(Trouble::degraded));
            pass(1);
        }
    }

    void goodFor(int seconds) {
        for (int second = 0; second < seconds; ++second) {
            recorder.follow(stateOf(Trouble::none));
            pass(1);
        }
    }
};

TEST_F(RecorderEpisodes, AnOutageLastsFromTheFirstLostPingToTheAnswer) {
    outage();

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].kind, Episode::Kind::outage);
    EXPECT_EQ(episodes[0].start, after(10));
    EXPECT_EQ(episodes[0].end, after(40));
    EXPECT_EQ(episodes[0].pingsLost, 26); // of 30, the last four were not judged yet
    EXPECT_EQ(episodes[0].address, "192.0.2.1");
    EXPECT_EQ(episodes[0].interface, "eth0");
}

TEST_F(RecorderEpisodes, AnOutageIsWrittenAtOnceAtBothEnds) {
    pass(10);
    passSilent(12);
    ASSERT_TRUE(journal.batches.empty());
    recorder.follow(stateOf(Trouble::down));
    ASSERT_EQ(journal.batches.size(), 1U);
    EXPECT_EQ(journal.batches[0].episodes.at(0).end, std::nullopt);
    EXPECT_EQ(journal.batches[0].episodes.at(0).address, "192.0.2.1");
    answered();
    recorder.follow(stateOf(Trouble::none));
    ASSERT_EQ(journal.batches.size(), 2U);
    EXPECT_EQ(journal.batches[1].episodes.at(0).end, after(22));
}

TEST_F(RecorderEpisodes, AnOutageWithoutASingleLostPingBeginsWithTheLastAnswer) {
    pass(10);
    for (int second = 0; second < 12; ++second) {
        passSecond(); // there is no address to send anything to
    }
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(9));
}

TEST_F(RecorderEpisodes, AnOutageFromTheStartOnBeginsThere) {
    for (int second = 0; second < 12; ++second) {
        passSecond();
    }
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(0));
}

TEST_F(RecorderEpisodes, AnOutageAfterAPauseBeginsAtItsEnd) {
    pass(10);
    recorder.interrupt(Gap::Kind::paused);
    loop.advance(60);
    recorder.resume();
    for (int second = 0; second < 12; ++second) {
        passSecond();
    }
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(70));
}

TEST_F(RecorderEpisodes, AnAnswerToAnEarlierPingDoesNotBreakTheSilence) {
    pass(10);
    recorder.pingSent(++lastId, true);
    const std::uint64_t slow = lastId;
    passSecond();
    passSilent(8);
    recorder.pingReplied(slow, 8000, false);
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(11));
    EXPECT_EQ(kept().episodes.at(0).pingsLost, 4);
}

TEST_F(RecorderEpisodes, AnAnsweredPingIsNoPartOfTheSilence) {
    pass(5);
    recorder.pingSent(++lastId, true);
    const std::uint64_t overtaken = lastId; // its successor is answered
    loop.advance(1);
    pass(5);
    passSilent(6);
    recorder.follow(stateOf(Trouble::down));
    recorder.pingLost(overtaken);

    EXPECT_EQ(kept().episodes.at(0).start, after(11));
    EXPECT_EQ(kept().episodes.at(0).pingsLost, 3);
}

TEST_F(RecorderEpisodes, LossesBeforeTheLastAnswerAreNoPartOfIt) {
    passSilent(10);
    answered();
    pass(10);
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(20));
    EXPECT_EQ(kept().episodes.at(0).pingsLost, 6);
}

TEST_F(RecorderEpisodes, TheLastVerdictStays) {
    passSilent(10);
    ConnectionState state = stateOf(Trouble::down);
    recorder.follow(state);
    state.verdict = Verdict{.blame = Blame::unclear};
    recorder.follow(state);
    state.verdict = provider;
    recorder.follow(state);
    state.verdict.reset();
    state.address.clear();
    recorder.follow(state);
    passSilent(5, false);
    EXPECT_EQ(kept().episodes.at(0).verdict, provider);
    answered();
    recorder.follow(stateOf(Trouble::none));

    EXPECT_EQ(kept().episodes.at(0).verdict, provider);
    EXPECT_EQ(kept().episodes.at(0).address, "192.0.2.1");
}

TEST_F(RecorderEpisodes, AnOutageThatLastsIsWrittenWithTheMinute) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    const std::size_t before = journal.batches.size();
    ConnectionState state = stateOf(Trouble::down);
    state.verdict = provider;
    recorder.follow(state);
    EXPECT_EQ(journal.batches.size(), before);
    passSilent(55, false);

    ASSERT_EQ(journal.batches.size(), before + 1);
    EXPECT_EQ(journal.batches.back().episodes.at(0).verdict, provider);
    EXPECT_EQ(journal.batches.back().episodes.at(0).end, std::nullopt);
}

TEST_F(RecorderEpisodes, AVerdictThatComesLaterIsNews) {
    loop.advance(1);
    recorder.follow(stateOf(Trouble::down));
    for (int second = 0; second < 130; ++second) {
        ConnectionState state = stateOf(Trouble::down);
        state.verdict = provider;
        recorder.follow(state);
        passSecond();
    }
    EXPECT_EQ(journal.read(test::recordedHost, {}).episodes.at(0).verdict, provider);
}

TEST_F(RecorderEpisodes, AnOutageOfWhichNothingIsKnownIsOne) {
    loop.advance(1);
    recorder.follow({.trouble = Trouble::down});

    EXPECT_EQ(journal.batches.at(0).episodes.at(0), Episode{.start = after(0)});
}

TEST_F(RecorderEpisodes, SilenceBeforeASleepIsNoPartOfTheOutageAfterIt) {
    passSilent(10);
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(100);
    recorder.resume();
    passSecond();
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(110));
    EXPECT_EQ(kept().episodes.at(0).pingsLost, 0);
}

TEST_F(RecorderEpisodes, AnEpisodeWithoutNewsIsNotWrittenAgain) {
    loop.advance(1);
    recorder.follow(stateOf(Trouble::down));
    for (int second = 0; second < 130; ++second) {
        recorder.follow(stateOf(Trouble::down));
        passSecond();
    }
    EXPECT_TRUE(journal.batches.back().episodes.empty());
}

TEST_F(RecorderEpisodes, ADegradationEndsWhereItWasGoodForHalfAMinute) {
    pass(5);
    degradedFor(20);
    goodFor(29);
    degradedFor(3); // it goes on
    goodFor(31);
    goodFor(10);

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].kind, Episode::Kind::degradation);
    EXPECT_EQ(episodes[0].start, after(5));
    EXPECT_EQ(episodes[0].end, after(57));
}

TEST_F(RecorderEpisodes, ADegradationEndsWhereTheOutageBegins) {
    degradedFor(20);
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 2U);
    EXPECT_EQ(episodes[0].kind, Episode::Kind::degradation);
    EXPECT_EQ(episodes[0].end, after(20));
    EXPECT_EQ(episodes[1].kind, Episode::Kind::outage);
    EXPECT_EQ(episodes[1].start, after(20));
}

TEST_F(RecorderEpisodes, TheOnsetOfAnOutageIsNoDegradation) {
    pass(10);
    passSilent(5);
    recorder.follow(stateOf(Trouble::degraded));
    passSilent(5);
    recorder.follow(stateOf(Trouble::down));
    EXPECT_EQ(kept().episodes.size(), 1U);
    answered();
    recorder.follow(stateOf(Trouble::none));

    ASSERT_EQ(kept().episodes.size(), 1U);
    EXPECT_EQ(kept().episodes[0].kind, Episode::Kind::outage);
}

TEST_F(RecorderEpisodes, TheOnsetThatIsWrittenAlreadyEndsAtOnce) {
    pass(10);
    passSilent(5);
    recorder.follow(stateOf(Trouble::degraded));
    recorder.save();
    passSilent(5);
    recorder.follow(stateOf(Trouble::down));

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 2U);
    EXPECT_EQ(episodes[1].kind, Episode::Kind::degradation);
    EXPECT_EQ(episodes[1].end, episodes[1].start);
}

TEST_F(RecorderEpisodes, TheOnsetThatAFullDiskDidNotTakeIsForgotten) {
    journal.setState(Journal::State::cannotWrite);
    pass(10);
    passSilent(5);
    recorder.follow(stateOf(Trouble::degraded));
    recorder.save();
    passSilent(5);
    recorder.follow(stateOf(Trouble::down));
    journal.setState(Journal::State::writes);

    ASSERT_EQ(kept().episodes.size(), 1U);
    EXPECT_EQ(kept().episodes[0].kind, Episode::Kind::outage);
}

TEST_F(RecorderEpisodes, TheLossOfAnOutageThatTheBarsStillTellOfIsNoDegradation) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    answered();
    degradedFor(12);
    goodFor(40);

    EXPECT_EQ(kept().episodes.size(), 1U);
}

TEST_F(RecorderEpisodes, ALossAfterAnOutageMayBeADegradationAtOnce) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    answered();
    recorder.follow(stateOf(Trouble::degraded));
    passSilent(5);
    recorder.follow(stateOf(Trouble::degraded));

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 2U);
    EXPECT_EQ(episodes[1].kind, Episode::Kind::degradation);
    EXPECT_EQ(episodes[1].start, after(15));
}

TEST_F(RecorderEpisodes, ADegradationMayFollowWhenTheBarsTellNoLongerOfTheOutage) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    answered();
    degradedFor(40); // slow, without a loss

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 2U);
    EXPECT_EQ(episodes[1].start, after(40));
}

TEST_F(RecorderEpisodes, OnceAllWasWellADegradationIsOne) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    answered();
    recorder.follow(stateOf(Trouble::none));
    pass(5);
    recorder.follow(stateOf(Trouble::degraded));

    ASSERT_EQ(kept().episodes.size(), 2U);
    EXPECT_EQ(kept().episodes[1].start, after(15));
}

TEST_F(RecorderEpisodes, GoodSecondsBeforeAnotherHostAreNoPartOfADegradation) {
    degradedFor(10);
    goodFor(20);
    recorder.setHost("two.example");

    EXPECT_EQ(kept(test::recordedHost).episodes.at(0).end, after(10));
}

TEST_F(RecorderEpisodes, AnotherHostEndsThem) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    recorder.setHost("two.example");
    pass(5);

    EXPECT_EQ(kept().episodes.at(0).end, after(10));
    EXPECT_TRUE(kept("two.example").episodes.empty());
}

TEST_F(RecorderEpisodes, TheStopEndsThem) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    recorder.stop();

    EXPECT_EQ(journal.read(test::recordedHost, {}).episodes.at(0).end, after(10));
}

TEST_F(RecorderEpisodes, ASleepEndsThem) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    recorder.interrupt(Gap::Kind::asleep);
    loop.sleep(3600);
    recorder.follow(stateOf(Trouble::down)); // nothing is known of the time asleep
    recorder.resume();
    recorder.follow(stateOf(Trouble::none));

    const auto episodes = kept().episodes;
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].end, after(10));
}

TEST_F(RecorderEpisodes, AClockThatIsSetBackBeginsASecondOne) {
    loop.advance(600);
    recorder.start(test::recordedHost);
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    loop.setWallClock(loop.wallNow() - std::chrono::seconds(300));
    passSecond();
    passSilent(19, false);
    answered();
    recorder.follow(stateOf(Trouble::none));

    History history = kept();
    std::chrono::seconds down{};
    for (const Episode& episode : history.episodes) {
        down += spanOf(episode, history.until).length();
    }
    EXPECT_EQ(history.episodes.size(), 2U);
    EXPECT_NEAR(static_cast<double>(down.count()), 30, 1);
}

TEST_F(RecorderEpisodes, AnOutageAfterTheClockWasSetBackBeginsThere) {
    pass(700);
    loop.setWallClock(begin + std::chrono::seconds(100));
    for (int second = 0; second < 12; ++second) {
        passSecond();
    }
    recorder.follow(stateOf(Trouble::down));

    EXPECT_EQ(kept().episodes.at(0).start, after(100));
}

TEST_F(RecorderEpisodes, AClockThatIsCorrectedByASecondSplitsNothing) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    loop.setWallClock(loop.wallNow() - std::chrono::milliseconds(1500));
    passSecond();

    EXPECT_EQ(kept().episodes.size(), 1U);
}

TEST_F(RecorderEpisodes, AClockThatIsSetForwardMakesAGapInIt) {
    passSilent(10);
    recorder.follow(stateOf(Trouble::down));
    loop.setWallClock(loop.wallNow() + std::chrono::hours(1));
    passSilent(10, false);
    answered();
    recorder.follow(stateOf(Trouble::none));

    const History history = kept();
    ASSERT_EQ(history.episodes.size(), 1U);
    EXPECT_NEAR(static_cast<double>(knownLength(history.episodes[0], history).count()), 20, 1);
}

} // namespace
} // namespace tarnwick
