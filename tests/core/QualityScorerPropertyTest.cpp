// The scorer beside a second one that follows its rules word for word.
#include "core/QualityScorer.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>

namespace tarnwick {
namespace {

using Pings = std::vector<PendingPing>;

enum class Verdict { passedOver, scored, lost };

struct Judgment {
    Verdict verdict;
    double score = 0;
};

Judgment judgmentOf(const PendingPing& ping, double now, const ScoringConfig& config) {
    double time = 0;
    if (ping.reply) {
        time = *ping.reply - ping.sent;
        if (time > config.timeout) {
            return {Verdict::lost, -2.5};
        }
    } else {
        time = now - ping.sent;
        if (time < config.highThreshold) {
            return {Verdict::passedOver};
        }
        if (time > config.timeout) {
            return {Verdict::lost, -2.5};
        }
    }
    if (time <= config.lowThreshold) {
        return {Verdict::scored, 1};
    }
    const double score = 1 - (time - config.lowThreshold) / (config.highThreshold - config.lowThreshold);
    return {Verdict::scored, score <= -2.5 ? -2.5 : score};
}

std::optional<double> weightedMean(const std::vector<double>& scores) {
    if (scores.empty()) {
        return std::nullopt;
    }
    double sum = 0;
    double weights = 0;
    for (std::size_t at = 0; at < scores.size(); ++at) {
        const double weight = std::pow(1.2, static_cast<double>(at));
        sum += weight * scores[at];
        weights += weight;
    }
    return sum / weights;
}

Evaluation plainlyEvaluated(Pings& pings, double now, const ScoringConfig& config) {
    Pings inWindow;
    for (const PendingPing& ping : pings) {
        if (!(now - ping.sent > config.averageOver)) {
            inWindow.push_back(ping);
        }
    }
    Evaluation evaluation;
    std::vector<double> scores;
    int lost = 0;
    for (PendingPing& ping : inWindow) {
        const Judgment judgment = judgmentOf(ping, now, config);
        if (judgment.verdict == Verdict::passedOver) {
            continue;
        }
        scores.push_back(judgment.score);
        if (judgment.verdict == Verdict::lost) {
            ++lost;
            if (!ping.lost) {
                ping.lost = true;
                evaluation.newlyLost.push_back(ping);
            }
        }
    }
    if (!inWindow.empty()) {
        evaluation.lossPercent = 100.0 * lost / static_cast<double>(inWindow.size());
    }
    evaluation.score = weightedMean(scores);
    pings = inWindow;
    return evaluation;
}

/// Eighths of a second are exact, so that times fall exactly on thresholds now and then.
double anyEighths(int least, int most) {
    return *rc::gen::inRange(least, most + 1) * 0.125;
}

ScoringConfig anyConfig() {
    if (*rc::gen::arbitrary<bool>()) {
        return ScoringConfig::original(
            *rc::gen::inRange(1, 3000), anyEighths(1, 80), static_cast<double>(*rc::gen::inRange(1, 61)));
    }
    const double low = anyEighths(0, 8);
    return {
        .lowThreshold = low,
        .highThreshold = low + anyEighths(1, 8),
        .timeout = anyEighths(1, 40),
        .averageOver = anyEighths(8, 240),
    };
}

Pings anyPings() {
    Pings pings;
    double sent = 0;
    const int count = *rc::gen::inRange(0, 60);
    for (int number = 0; number < count; ++number) {
        sent += anyEighths(0, 12);
        PendingPing ping{.id = static_cast<std::uint64_t>(number), .sent = sent};
        if (*rc::gen::arbitrary<bool>()) {
            ping.reply = sent + anyEighths(0, 60);
        }
        pings.push_back(ping);
    }
    return pings;
}

void expectSame(const Evaluation& actual, const Evaluation& expected) {
    RC_ASSERT(actual.score.has_value() == expected.score.has_value());
    RC_ASSERT(std::abs(actual.score.value_or(0) - expected.score.value_or(0)) < 1e-9);
    RC_ASSERT(std::abs(actual.lossPercent - expected.lossPercent) < 1e-9);
    RC_ASSERT(actual.newlyLost == expected.newlyLost);
}

TEST(QualityScorerProperty, AgreesWithItsRulesEvaluationAfterEvaluation) {
    EXPECT_TRUE(rc::check("agrees", [] {
        const ScoringConfig config = anyConfig();
        Pings pings = anyPings();
        Pings plainPings = pings;
        double now = pings.empty() ? 0 : pings.back().sent;
        for (int evaluation = 0; evaluation < 6; ++evaluation) {
            const Evaluation actual = QualityScorer::evaluate(pings, now, config);
            expectSame(actual, plainlyEvaluated(plainPings, now, config));
            RC_ASSERT(pings == plainPings);
            now += anyEighths(0, 60);
        }
    }));
}

TEST(QualityScorerProperty, KeepsScoreAndLossWithinTheirBounds) {
    EXPECT_TRUE(rc::check("bounds", [] {
        Pings pings = anyPings();
        const double now = pings.empty() ? 0 : pings.back().sent + anyEighths(0, 60);
        const Evaluation evaluation = QualityScorer::evaluate(pings, now, anyConfig());
        RC_ASSERT(evaluation.lossPercent >= 0 && evaluation.lossPercent <= 100);
        RC_ASSERT(evaluation.score.value_or(0) >= -2.5 - 1e-9 && evaluation.score.value_or(0) <= 1 + 1e-9);
    }));
}

TEST(QualityScorerProperty, ReportsEveryLostPingExactlyOnce) {
    EXPECT_TRUE(rc::check("reported once", [] {
        const ScoringConfig config = anyConfig();
        Pings pings = anyPings();
        std::vector<std::uint64_t> reported;
        double now = pings.empty() ? 0 : pings.back().sent;
        for (int evaluation = 0; evaluation < 10; ++evaluation) {
            for (const PendingPing& ping : QualityScorer::evaluate(pings, now, config).newlyLost) {
                RC_ASSERT(ping.lost);
                reported.push_back(ping.id);
            }
            now += anyEighths(0, 30);
        }
        std::ranges::sort(reported);
        RC_ASSERT(std::ranges::adjacent_find(reported) == reported.end());
    }));
}

TEST(BarsProperty, GrowWithTheScoreFromOneToAll) {
    EXPECT_TRUE(rc::check("bars", [](int first, int second) {
        const double low = std::min(first, second) / 1000.0;
        const double high = std::max(first, second) / 1000.0;
        const int levels = *rc::gen::inRange(1, 11);
        RC_ASSERT(QualityScorer::bars(low, levels) >= 1);
        RC_ASSERT(QualityScorer::bars(low, levels) <= QualityScorer::bars(high, levels));
        RC_ASSERT(QualityScorer::bars(high, levels) <= levels);
    }));
}

} // namespace
} // namespace tarnwick
