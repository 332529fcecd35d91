// The figures of one period, and of merged ones.
#include "core/History/PeriodFigures.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

PeriodFigures figuresOf(const std::vector<double>& answers, std::int64_t lost) {
    PeriodFigures figures{.watchedSeconds = 60, .lost = lost};
    figures.sent = lost + static_cast<std::int64_t>(answers.size());
    for (std::size_t index = 0; index < answers.size(); ++index) {
        figures.addAnswer(answers[index]);
        if (index > 0) {
            figures.addDifference(std::abs(answers[index] - answers[index - 1]));
        }
    }
    return figures;
}

TEST(PeriodFigures, WithoutAnswersHaveNoLatency) {
    const PeriodFigures figures = figuresOf({}, 3);

    EXPECT_EQ(figures.medianMs(), std::nullopt);
    EXPECT_EQ(figures.percentile95Ms(), std::nullopt);
    EXPECT_EQ(figures.jitterMs(), std::nullopt);
    EXPECT_EQ(figures.lossPercent(), 100);
    EXPECT_FALSE(figures.isEmpty());
}

TEST(PeriodFigures, OfNoPingsTellNoLoss) {
    EXPECT_EQ(PeriodFigures().lossPercent(), std::nullopt);
    EXPECT_TRUE(PeriodFigures().isEmpty());
}

TEST(PeriodFigures, KnowNoLossOfPingsStillOnTheirWay) {
    PeriodFigures figures = figuresOf({20, 20, 20}, 1);
    figures.sent += 4;

    EXPECT_EQ(figures.lossPercent(), 25);
}

TEST(PeriodFigures, OfASingleAnswerAreExact) {
    const PeriodFigures figures = figuresOf({17.3}, 0);

    EXPECT_EQ(figures.fastestMs, 17.3);
    EXPECT_EQ(figures.medianMs(), 17.3);
    EXPECT_EQ(figures.percentile95Ms(), 17.3);
    EXPECT_EQ(figures.slowestMs, 17.3);
    EXPECT_EQ(figures.jitterMs(), std::nullopt);
}

TEST(PeriodFigures, JitterIsTheMeanDifference) {
    EXPECT_EQ(figuresOf({10, 14, 12}, 0).jitterMs(), 3);
}

TEST(PeriodFigures, MergeToThoseOfAllPings) {
    PeriodFigures merged = figuresOf({30, 40}, 1);
    merged.merge(figuresOf({10, 500}, 2));

    EXPECT_EQ(merged.watchedSeconds, 120);
    EXPECT_EQ(merged.sent, 7);
    EXPECT_EQ(merged.replied, 4);
    EXPECT_EQ(merged.lost, 3);
    EXPECT_EQ(merged.fastestMs, 10);
    EXPECT_EQ(merged.slowestMs, 500);
    EXPECT_EQ(merged.jitterMs(), 250);
    EXPECT_EQ(merged.latencies, figuresOf({10, 30, 40, 500}, 0).latencies);
}

TEST(PeriodFigures, MergedMedianIsNotThatOfTheMedians) {
    PeriodFigures merged = figuresOf({10, 10, 10, 10, 10, 10, 10}, 0);
    merged.merge(figuresOf({100}, 0));
    merged.merge(figuresOf({100}, 0));

    EXPECT_NEAR(merged.medianMs().value(), 10, 0.3);
    EXPECT_NEAR(merged.percentile95Ms().value(), 100, 3);
}

TEST(PeriodFigures, MergeWithAPeriodWithoutAnswersKeepsTheExtremes) {
    const PeriodFigures silent = figuresOf({}, 12);
    PeriodFigures later = silent;
    later.merge(figuresOf({30, 40}, 0));
    PeriodFigures earlier = figuresOf({30, 40}, 0);
    earlier.merge(silent);

    EXPECT_EQ(later, earlier);
    EXPECT_EQ(later.fastestMs, 30);
    EXPECT_EQ(later.slowestMs, 40);
}

} // namespace
} // namespace tarnwick
