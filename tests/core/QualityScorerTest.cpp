// Score, loss and newly lost pings of a window.
#include "core/QualityScorer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace tarnwick {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Pings = std::vector<PendingPing>;

/// Threshold 100 ms, time-out 4 s, interval 1 s: perfect up to 0.1 s, zero at 1.0 s, a window of 30 s.
const ScoringConfig config = ScoringConfig::original(100, 4, 1);

PendingPing answered(std::uint64_t id, double sent, double roundTrip) {
    return {.id = id, .sent = sent, .reply = sent + roundTrip};
}

PendingPing outstanding(std::uint64_t id, double sent) {
    return {.id = id, .sent = sent};
}

PendingPing lost(PendingPing ping) {
    ping.lost = true;
    return ping;
}

/// One ping alone in the window, answered after so many seconds.
Evaluation evaluationOfOneReply(double roundTrip) {
    Pings pings{answered(1, 0, roundTrip)};
    return QualityScorer::evaluate(pings, 10, config);
}

Evaluation evaluationOfOneWaitingFor(double age) {
    Pings pings{outstanding(1, 0)};
    return QualityScorer::evaluate(pings, age, config);
}

TEST(ScoringConfig, ComesFromTheUsersSettings) {
    EXPECT_EQ(
        ScoringConfig::original(250, 3, 7),
        (ScoringConfig{.lowThreshold = 0.25, .highThreshold = 1.15, .timeout = 3, .averageOver = 70}));
}

struct Window {
    double interval;
    double seconds;
};

class AveragingWindow : public testing::TestWithParam<Window> {};

INSTANTIATE_TEST_SUITE_P(
    ScoringConfig, AveragingWindow,
    testing::Values(Window{1, 30}, Window{2, 30}, Window{3, 30}, Window{5, 50}, Window{60, 600}));

TEST_P(AveragingWindow, SpansTenPingsAndThirtySeconds) {
    EXPECT_EQ(ScoringConfig::averagingWindow(GetParam().interval), GetParam().seconds);
    EXPECT_EQ(ScoringConfig::original(100, 4, GetParam().interval).averageOver, GetParam().seconds);
}

TEST(QualityScorer, HasItsConstants) {
    EXPECT_EQ(QualityScorer::lostScore, -2.5);
    EXPECT_EQ(QualityScorer::recencyWeight, 1.2);
    EXPECT_EQ(ScoringConfig::minimumWindow, 30.0);
    EXPECT_EQ(ScoringConfig::minimumPingsInWindow, 10.0);
}

TEST(Evaluation, OfNoPingsHasNoScoreAndNoLoss) {
    Pings none;
    EXPECT_EQ(QualityScorer::evaluate(none, 5, config), Evaluation());
}

TEST(Evaluation, OfPingsThatHaveAllLeftTheWindowHasNoScoreAndNoLoss) {
    Pings pings{answered(1, 0, 0.05), outstanding(2, 1)};
    EXPECT_EQ(QualityScorer::evaluate(pings, 40, config), Evaluation());
    EXPECT_THAT(pings, IsEmpty());
}

TEST(Evaluation, KeepsAPingExactlyAsOldAsTheWindowAndDropsAnOlderOne) {
    Pings pings{answered(1, 0, 0.05), answered(2, 1, 0.05), answered(3, 2, 0.05)};
    const Evaluation evaluation = QualityScorer::evaluate(pings, 31, config);
    EXPECT_THAT(pings, ElementsAre(answered(2, 1, 0.05), answered(3, 2, 0.05)));
    EXPECT_EQ(evaluation.score, 1.0);
}

TEST(Evaluation, OfYoungOutstandingPingsAloneHasNoScoreAndNoLoss) {
    Pings pings{outstanding(1, 0), outstanding(2, 0.5)};
    EXPECT_EQ(QualityScorer::evaluate(pings, 0.9, config), Evaluation());
}

TEST(Evaluation, OfTheSamePingsLaterHasAScoreOfZeroOrLessAndStillNoLoss) {
    Pings pings{outstanding(1, 0), outstanding(2, 0.5)};
    const Evaluation later = QualityScorer::evaluate(pings, 3, config);
    ASSERT_TRUE(later.score);
    EXPECT_LE(*later.score, 0);
    EXPECT_EQ(later.lossPercent, 0);
    EXPECT_THAT(later.newlyLost, IsEmpty());
}

struct Scored {
    double seconds;
    double score;
};

class ScoreOfOneReply : public testing::TestWithParam<Scored> {};

INSTANTIATE_TEST_SUITE_P(
    QualityScorer, ScoreOfOneReply,
    testing::Values(
        Scored{0, 1}, Scored{0.05, 1}, Scored{0.1, 1}, Scored{0.55, 0.5}, Scored{1.0, 0}, Scored{1.9, -1},
        Scored{3.1, -2 - 1.0 / 3}, Scored{3.25, -2.5}, Scored{3.7, -2.5}, Scored{4, -2.5}));

TEST_P(ScoreOfOneReply, FallsWithItsRoundTripDownToTheFloor) {
    const Evaluation evaluation = evaluationOfOneReply(GetParam().seconds);
    ASSERT_TRUE(evaluation.score);
    EXPECT_NEAR(*evaluation.score, GetParam().score, 1e-12);
    EXPECT_EQ(evaluation.lossPercent, 0);
}

TEST(Evaluation, ScoresExactlyOneAtTheLowThreshold) {
    EXPECT_EQ(evaluationOfOneReply(config.lowThreshold).score, 1.0);
}

TEST(Evaluation, TakesAReplyExactlyAtTheTimeoutForNoLoss) {
    const Evaluation evaluation = evaluationOfOneReply(config.timeout);
    EXPECT_EQ(evaluation.score, -2.5);
    EXPECT_EQ(evaluation.lossPercent, 0);
}

TEST(Evaluation, TakesAReplyAfterTheTimeoutForALoss) {
    Pings pings{answered(1, 0, 4.01)};
    const Evaluation evaluation = QualityScorer::evaluate(pings, 10, config);
    EXPECT_EQ(evaluation.score, -2.5);
    EXPECT_EQ(evaluation.lossPercent, 100);
    EXPECT_THAT(evaluation.newlyLost, ElementsAre(lost(answered(1, 0, 4.01))));
    EXPECT_THAT(pings, ElementsAre(lost(answered(1, 0, 4.01))));
}

TEST(Evaluation, PassesOverAnOutstandingPingUntilTheHighThreshold) {
    EXPECT_EQ(evaluationOfOneWaitingFor(0.99).score, std::nullopt);
}

TEST(Evaluation, ScoresAnOutstandingPingFromTheHighThresholdOnAsIfItCameBackNow) {
    const Evaluation atThreshold = evaluationOfOneWaitingFor(1.0);
    ASSERT_TRUE(atThreshold.score);
    EXPECT_NEAR(*atThreshold.score, 0, 1e-12);
    const Evaluation later = evaluationOfOneWaitingFor(1.9);
    ASSERT_TRUE(later.score);
    EXPECT_NEAR(*later.score, -1, 1e-12);
}

TEST(Evaluation, TakesAnOutstandingPingExactlyAtTheTimeoutForNoLoss) {
    EXPECT_EQ(evaluationOfOneWaitingFor(4).lossPercent, 0);
    EXPECT_EQ(evaluationOfOneWaitingFor(4.01).lossPercent, 100);
}

TEST(Evaluation, PassesOverAnOutstandingPingPastATimeoutThatIsBelowTheHighThreshold) {
    const ScoringConfig impatient = ScoringConfig::original(2000, 1, 1);
    Pings pings{outstanding(1, 0)};
    EXPECT_EQ(QualityScorer::evaluate(pings, 2.5, impatient), Evaluation());
    EXPECT_EQ(QualityScorer::evaluate(pings, 2.9, impatient).lossPercent, 100);
}

TEST(Evaluation, CountsYoungOutstandingPingsInTheLossDenominator) {
    Pings pings{outstanding(1, 0), outstanding(2, 9.5)};
    EXPECT_EQ(QualityScorer::evaluate(pings, 10, config).lossPercent, 50);
}

TEST(Evaluation, ReportsALostPingOnceAndCountsItEachTime) {
    Pings pings{outstanding(1, 0)};
    const Evaluation first = QualityScorer::evaluate(pings, 5, config);
    const Evaluation second = QualityScorer::evaluate(pings, 6, config);

    EXPECT_THAT(first.newlyLost, ElementsAre(lost(outstanding(1, 0))));
    EXPECT_THAT(second.newlyLost, IsEmpty());
    EXPECT_EQ(first.lossPercent, 100);
    EXPECT_EQ(second.lossPercent, 100);
    EXPECT_EQ(second.score, -2.5);
}

TEST(Evaluation, ReportsNewlyLostPingsInTheirOrder) {
    Pings pings{outstanding(1, 0), answered(2, 1, 0.05), answered(3, 2, 4.5), lost(outstanding(4, 3))};
    EXPECT_THAT(
        QualityScorer::evaluate(pings, 10, config).newlyLost,
        ElementsAre(lost(outstanding(1, 0)), lost(answered(3, 2, 4.5))));
}

TEST(Evaluation, OfOneLostPingInThirtyHasALossOfAThirtieth) {
    Pings pings;
    for (std::uint64_t id = 0; id < 30; ++id) {
        pings.push_back(answered(id, static_cast<double>(id), 0.02));
    }
    pings[3].reply.reset();
    EXPECT_NEAR(QualityScorer::evaluate(pings, 29.5, config).lossPercent, 100.0 / 30, 1e-12);
}

TEST(Evaluation, WeighsLaterPingsMore) {
    Pings worsening{answered(1, 0, 0.05), answered(2, 1, 1.0)};
    Pings improving{answered(1, 0, 1.0), answered(2, 1, 0.05)};
    const Evaluation worse = QualityScorer::evaluate(worsening, 10, config);
    const Evaluation better = QualityScorer::evaluate(improving, 10, config);

    ASSERT_TRUE(worse.score && better.score);
    EXPECT_NEAR(*worse.score, 1.0 / 2.2, 1e-12);
    EXPECT_NEAR(*better.score, 1.2 / 2.2, 1e-12);
}

TEST(Evaluation, GivesPassedOverPingsNoWeight) {
    Pings pings{answered(1, 0, 0.05), outstanding(2, 9.5), answered(3, 9.6, 0.05)};
    EXPECT_EQ(QualityScorer::evaluate(pings, 10, config).score, 1.0);
    Pings mixed{answered(1, 0, 1.0), outstanding(2, 9.5), answered(3, 9.6, 0.05)};
    const Evaluation evaluation = QualityScorer::evaluate(mixed, 10, config);
    ASSERT_TRUE(evaluation.score);
    EXPECT_NEAR(*evaluation.score, 1.2 / 2.2, 1e-12);
}

struct Lit {
    double score;
    int bars;
};

class BarsOfFive : public testing::TestWithParam<Lit> {};

INSTANTIATE_TEST_SUITE_P(
    QualityScorer, BarsOfFive,
    testing::Values(
        Lit{1.0, 5}, Lit{0.9, 5}, Lit{0.8, 5}, Lit{0.79, 4}, Lit{0.61, 4}, Lit{0.59, 3}, Lit{0.4, 3},
        Lit{0.39, 2}, Lit{0.2, 2}, Lit{0.19, 1}, Lit{0, 1}, Lit{-0.1, 1}, Lit{-2.5, 1}, Lit{7, 5},
        Lit{std::numeric_limits<double>::infinity(), 5}, Lit{-std::numeric_limits<double>::infinity(), 1}));

TEST_P(BarsOfFive, AreAlwaysOneToFive) {
    EXPECT_EQ(QualityScorer::bars(GetParam().score, 5), GetParam().bars);
}

TEST(Bars, MayHaveAnyNumberOfLevels) {
    EXPECT_EQ(QualityScorer::bars(0.5, 2), 2);
    EXPECT_EQ(QualityScorer::bars(0.49, 2), 1);
    EXPECT_EQ(QualityScorer::bars(1, 1), 1);
    EXPECT_EQ(QualityScorer::bars(0.95, 10), 10);
}

TEST(BarsDeathTest, StopTheProgramForAScoreThatIsNotANumber) {
    EXPECT_DEATH(static_cast<void>(QualityScorer::bars(std::numeric_limits<double>::quiet_NaN(), 5)), "");
}

} // namespace
} // namespace tarnwick
