// Which hops are probed when, and what becomes of their answers.
#include "core/Diagnosis/PathTrace.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarnwick {
namespace {

/// A path whose hops answer at once, unless they are silent.
class Path {
public:
    explicit Path(std::vector<std::string> addresses) : addresses_(std::move(addresses)) {}

    void silence(int hopLimit) { addresses_[static_cast<std::size_t>(hopLimit) - 1].clear(); }

    /// Sends what is due until a time; returns the hop limits in order.
    std::vector<int> run(PathTrace& trace, double until) {
        std::vector<int> sent;
        while (trace.isActive() && trace.nextProbeAt() <= until) {
            const double now = trace.nextProbeAt();
            if (const auto probe = trace.probe(now)) {
                sent.push_back(probe->hopLimit);
                answer(trace, *probe, now);
            }
        }
        return sent;
    }

    /// Milliseconds after which a hop answers.
    double ms = 4;

private:
    void answer(PathTrace& trace, const PathTrace::Probe& probe, double now) const {
        const std::size_t hop = std::min(static_cast<std::size_t>(probe.hopLimit), addresses_.size()) - 1;
        if (!addresses_[hop].empty()) {
            trace.answered(probe.id, addresses_[hop], hop + 1 == addresses_.size(), now + ms / 1000);
        }
    }

    std::vector<std::string> addresses_;
};

const std::vector<std::string> fourHops{"192.0.2.1", "198.51.100.1", "203.0.113.1", "203.0.113.9"};

class PathTraceTest : public testing::Test {
protected:
    PathTrace trace{1000};
    Path path{fourHops};
};

TEST_F(PathTraceTest, NothingIsProbedAtFirst) {
    EXPECT_FALSE(trace.isActive());
    EXPECT_EQ(trace.probe(100), std::nullopt);
}

TEST_F(PathTraceTest, LearnsThePathInThreeRoundsAndRests) {
    trace.learn(100);

    EXPECT_EQ(path.run(trace, 200), (std::vector{1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}));
    EXPECT_FALSE(trace.isActive());
    const auto hops = trace.hops(200, 200);
    ASSERT_EQ(hops.size(), 4U);
    for (std::size_t hop = 0; hop < hops.size(); ++hop) {
        EXPECT_EQ(hops[hop].address, fourHops[hop]);
        EXPECT_EQ(hops[hop].isHost, hop == 3);
        EXPECT_DOUBLE_EQ(hops[hop].quietShare, 1);
        EXPECT_NEAR(hops[hop].quietMs.value(), 4, 1e-6);
        EXPECT_TRUE(hops[hop].samples.empty());
    }
}

TEST_F(PathTraceTest, ProbesOnceASecondAtMost) {
    trace.learn(100);

    EXPECT_TRUE(trace.probe(100.5).has_value());
    EXPECT_EQ(trace.probe(101.4), std::nullopt);
    EXPECT_TRUE(trace.probe(101.5).has_value());
}

TEST_F(PathTraceTest, AtMostTwelveHopsAreProbed) {
    Path far(std::vector<std::string>(14, "192.0.2.1"));
    trace.learn(100);

    const auto sent = far.run(trace, 200);

    EXPECT_EQ(sent.size(), 36U);
    EXPECT_EQ(std::ranges::max(sent), 12);
    const auto hops = trace.hops(200, 200);
    ASSERT_EQ(hops.size(), 14U);
    EXPECT_EQ(hops[12].quietShare, 0);
    EXPECT_TRUE(hops[13].isHost);
}

TEST_F(PathTraceTest, ASilentRouterHasNoAddressAndIsNotWatched) {
    path.silence(2);
    trace.learn(100);
    path.run(trace, 200);

    EXPECT_EQ(trace.hops(200, 200)[1].address, "");
    EXPECT_DOUBLE_EQ(trace.hops(200, 200)[1].quietShare, 0);
    trace.watch(200, 199);
    EXPECT_EQ(path.run(trace, 205), (std::vector{1, 3, 4, 1, 3, 4}));
}

TEST_F(PathTraceTest, WatchesInTurnUntilItRests) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(200, 199);
    trace.watch(201, 200);

    EXPECT_EQ(path.run(trace, 206), (std::vector{1, 2, 3, 4, 1, 2, 3}));
    trace.rest();
    EXPECT_TRUE(path.run(trace, 300).empty());
    EXPECT_EQ(trace.hops(200, 206)[0].samples.size(), 2U);
    EXPECT_EQ(trace.hops(203, 206)[0].samples.size(), 1U);
}

TEST_F(PathTraceTest, ASampleCountsOnceItsAnswerCanNoLongerCome) {
    trace.learn(100);
    path.run(trace, 200);
    path.silence(1);
    trace.watch(200, 199);
    path.run(trace, 200);

    EXPECT_TRUE(trace.hops(200, 202).front().samples.empty());
    ASSERT_EQ(trace.hops(200, 202.1).front().samples.size(), 1U);
    EXPECT_EQ(trace.hops(200, 202.1).front().samples[0].ms, std::nullopt);
}

TEST_F(PathTraceTest, AnswersThatComeTooLateTwiceOrToNoProbeAreIgnored) {
    trace.learn(100);
    const auto probe = trace.probe(100).value();

    trace.answered(probe.id, "192.0.2.1", false, 102.1);
    trace.answered(probe.id + 7, "192.0.2.1", true, 100.1);
    trace.answered(999, "192.0.2.1", true, 100.1);
    EXPECT_TRUE(trace.hops(100, 101).empty());

    trace.answered(probe.id, "192.0.2.1", false, 100.1);
    trace.answered(probe.id, "192.0.2.2", true, 100.2);
    EXPECT_EQ(trace.hops(100, 101).front().address, "192.0.2.1");
}

TEST_F(PathTraceTest, WhatWasLostSinceTheTroubleBeganIsNotTheQuietTime) {
    trace.learn(100);
    path.run(trace, 106);
    path.silence(1);
    path.run(trace, 108);

    trace.watch(109, 107.5);

    EXPECT_DOUBLE_EQ(trace.hops(107.5, 111)[0].quietShare, 1);
    EXPECT_EQ(trace.hops(107.5, 111)[0].samples.size(), 1U);
}

TEST_F(PathTraceTest, WithoutAKnownWayTheHopsAreFoundWhileWatching) {
    path.silence(3);
    path.silence(4);
    trace.watch(100, 99);

    EXPECT_EQ(path.run(trace, 107), (std::vector{1, 2, 3, 4, 1, 2, 3, 4}));
    const auto hops = trace.hops(99, 110);
    ASSERT_EQ(hops.size(), 2U);
    EXPECT_DOUBLE_EQ(hops[1].quietShare, 1);
    EXPECT_FALSE(hops[1].isHost);
}

TEST_F(PathTraceTest, LearningAnewForgetsThePath) {
    trace.learn(100);
    path.run(trace, 200);

    trace.learn(200);

    EXPECT_TRUE(trace.hops(100, 200).empty());
}

TEST_F(PathTraceTest, ALongTroubleKeepsTheQuietTime) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(200, 199);

    path.run(trace, 5000);

    EXPECT_DOUBLE_EQ(trace.hops(4990, 5000)[0].quietShare, 1);
    EXPECT_GE(trace.hops(4990, 5000)[0].samples.size(), 2U);
}

TEST_F(PathTraceTest, InTroubleOnlyWhoHasAnsweredAtAHopBeforeSpeaksForIt) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(300, 299);
    const auto forged = trace.probe(300);
    trace.answered(forged->id, "198.51.100.77", false, 300.001);
    EXPECT_TRUE(trace.hops(300, 303).front().samples.empty());

    trace.answered(forged->id, fourHops.front(), false, 300.002);

    EXPECT_TRUE(trace.hops(300, 303).front().samples.front().ms);
    EXPECT_EQ(trace.hops(300, 303).front().address, fourHops.front());
}

TEST_F(PathTraceTest, AStrangerInThePlaceOfAHopMayBeOfANewWay) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(300, 299);
    EXPECT_FALSE(trace.hasChanged());

    const auto probe = trace.probe(300);
    trace.answered(probe->id, "198.51.100.77", false, 300.001);

    EXPECT_TRUE(trace.hasChanged());
    EXPECT_TRUE(trace.hops(300, 303).front().samples.empty()); // neither lost nor answered
}

TEST_F(PathTraceTest, AStrangerAtSeveralHopsIsAForger) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(300, 299);
    for (const double now : {300.0, 301.0}) {
        trace.answered(trace.probe(now)->id, "198.51.100.77", false, now + 0.001);
    }

    EXPECT_FALSE(trace.hasChanged());
    EXPECT_EQ(trace.hops(300, 304).front().samples, (std::vector<HopSample>{{}}));
}

TEST_F(PathTraceTest, AStrangerBesideTheRouterItselfIsAForger) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(300, 299);
    const auto probe = trace.probe(300);
    trace.answered(probe->id, "198.51.100.77", false, 300.001);
    trace.answered(probe->id, fourHops.front(), false, 300.002);

    EXPECT_FALSE(trace.hasChanged());
}

TEST_F(PathTraceTest, RoutersThatTakeTurnsAtAHopAllSpeakForIt) {
    trace.learn(100);
    for (const char* const sender : {"192.0.2.1", "192.0.2.2"}) {
        const double now = trace.nextProbeAt();
        trace.answered(trace.probe(now)->id, sender, false, now);
        for (std::size_t hop = 1; hop < fourHops.size(); ++hop) {
            const double later = trace.nextProbeAt();
            trace.answered(trace.probe(later)->id, fourHops[hop], hop == fourHops.size() - 1, later);
        }
    }
    trace.watch(300, 299);

    const auto probe = trace.probe(300);
    trace.answered(probe->id, "192.0.2.2", false, 300.001);

    EXPECT_TRUE(trace.hops(300, 303).front().samples.front().ms);
}

TEST_F(PathTraceTest, TheHostSpeaksForItselfAtAnyHop) {
    trace.learn(100);
    path.run(trace, 200);
    trace.watch(300, 299);

    trace.answered(trace.probe(300)->id, fourHops.back(), true, 300.001);

    EXPECT_EQ(trace.hops(300, 303).size(), 1U);
}

TEST_F(PathTraceTest, WhereNobodyAnsweredBeforeAnyoneMay) {
    trace.watch(300, 299);

    trace.answered(trace.probe(300)->id, "198.51.100.77", false, 300.001);

    EXPECT_EQ(trace.hops(300, 303).front().address, "198.51.100.77");
}

} // namespace
} // namespace tarnwick
