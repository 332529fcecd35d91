// Score, loss and newly lost pings of a window.
#include "core/QualityScorer.h"

#include "tests/core/CaseFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <limits>
#include <sstream>

namespace tarnwick {
namespace {

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

/// Six decimals, without trailing zeros.
std::string written(double value) {
    std::ostringstream text;
    text << std::setprecision(9) << std::round(value * 1e6) / 1e6 + 0.0;
    return text.str();
}

/// Plays one case of cases/evaluation.txt.
class EvaluationTest : public testing::TestWithParam<test::Case> {
protected:
    std::string play(const test::CaseStep& step) {
        const std::string& name = step.words.front();
        if (name == "settings") {
            config_ = ScoringConfig::original(step.number(1), step.number(2), step.number(3));
            return {};
        }
        if (name == "ping") {
            addPing(step);
            return {};
        }
        if (name == "at") {
            return outcome(QualityScorer::evaluate(pings_, step.number(1), config_));
        }
        if (name == "held") {
            return ids(pings_);
        }
        if (name == "marked") {
            std::vector<PendingPing> marked;
            std::ranges::copy_if(pings_, std::back_inserter(marked), &PendingPing::lost);
            return ids(marked);
        }
        return "no such step";
    }

private:
    void addPing(const test::CaseStep& step) {
        const double sent = step.number(1);
        const bool isAnswered = !step.word(2).empty() && step.word(2) != "-";
        pings_.push_back({
            .id = pings_.size() + 1,
            .sent = sent,
            .reply = isAnswered ? std::optional(sent + step.number(2)) : std::nullopt,
            .lost = step.word(3) == "lost",
        });
    }

    static std::string ids(const std::vector<PendingPing>& pings) {
        std::string text;
        for (const PendingPing& ping : pings) {
            text += (text.empty() ? "" : " ") + std::to_string(ping.id);
        }
        return text;
    }

    static std::string outcome(const Evaluation& evaluation) {
        std::string text = evaluation.score ? written(*evaluation.score) : "none";
        text += " " + written(evaluation.lossPercent);
        if (!evaluation.newlyLost.empty()) {
            EXPECT_THAT(evaluation.newlyLost, testing::Each(testing::Field(&PendingPing::lost, true)));
            text += " lost " + ids(evaluation.newlyLost);
        }
        return text;
    }

    ScoringConfig config_ = ScoringConfig::original(100, 4, 1);
    std::vector<PendingPing> pings_;
};

INSTANTIATE_TEST_SUITE_P(
    QualityScorer, EvaluationTest, testing::ValuesIn(test::readCases("evaluation.txt")), test::caseName);

TEST_P(EvaluationTest, Holds) {
    for (const test::CaseStep& step : GetParam().steps) {
        EXPECT_EQ(play(step), step.expected) << test::place(GetParam(), step);
    }
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
