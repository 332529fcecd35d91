// The chances of each link of a path.
#include "core/Diagnosis/FaultPlace.h"

#include "tests/core/Diagnosis/SomeEvidence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace tarnwick {
namespace {

using namespace test;

std::size_t likeliest(const Evidence& evidence) {
    const auto chances = faultPlaces(evidence);
    return static_cast<std::size_t>(std::ranges::max_element(chances) - chances.begin());
}

TEST(FaultPlace, TheChancesAddUpToOne) {
    for (std::size_t hop = 0; hop <= hostHop; ++hop) {
        const auto chances = faultPlaces(downFrom(hop));

        EXPECT_EQ(chances.size(), hostHop + 1);
        EXPECT_NEAR(std::accumulate(chances.begin(), chances.end(), 0.0), 1, 1e-9);
    }
}

TEST(FaultPlace, IsTheLinkBeforeTheFirstHopThatIsBadToTheEnd) {
    for (std::size_t hop = 0; hop <= hostHop; ++hop) {
        EXPECT_EQ(likeliest(downFrom(hop)), hop);
        EXPECT_EQ(likeliest(lossyFrom(hop, 4)), hop);
        EXPECT_EQ(likeliest(lateFrom(hop, 140)), hop);
    }
}

TEST(FaultPlace, AnAnswerOfUnknownLatenessAcquitsNobody) {
    Evidence evidence = lateFrom(firstProviderHop, 140);
    for (HopEvidence& hop : evidence.hops) {
        hop.quietMs.reset();
    }
    const auto chances = faultPlaces(evidence);

    for (const double chance : chances) {
        EXPECT_NEAR(chance, 0.2, 0.01);
    }
}

TEST(FaultPlace, AnAnswerOfUnknownLatenessAcquitsOfLoss) {
    Evidence evidence = lossyFrom(hostsRouterHop, 5);
    for (HopEvidence& hop : evidence.hops) {
        hop.quietMs.reset();
    }

    EXPECT_EQ(likeliest(evidence), hostsRouterHop);
}

TEST(FaultPlace, MoreProbesMakeItSurer) {
    EXPECT_LT(
        faultPlaces(downFrom(hostsRouterHop, 1))[hostsRouterHop],
        faultPlaces(downFrom(hostsRouterHop, 3))[hostsRouterHop]);
}

TEST(FaultPlace, AnswersAcquitLessWhereThePingsMayHaveBeenUnlucky) {
    const Evidence evidence = lossyFrom(hostHop, 4);
    const auto asSeen = faultPlaces(evidence);
    const auto atLeast = faultPlaces(evidence, BadShare::atLeast);

    EXPECT_NEAR(std::accumulate(atLeast.begin(), atLeast.end(), 0.0), 1, 1e-9);
    EXPECT_GT(atLeast[hostsRouterHop], 2 * asSeen[hostsRouterHop]);
    EXPECT_EQ(std::ranges::max_element(atLeast) - atLeast.begin(), hostHop);
}

TEST(FaultPlace, LossAtARouterThatDoesNotGoOnProvesNothing) {
    Evidence evidence = lossyFrom(hostHop, 3);
    evidence.hops[firstProviderHop].samples = samples(1, 9, 6);

    EXPECT_EQ(likeliest(evidence), hostHop);
}

TEST(FaultPlace, ManyProbesDoNotLeaveTheRangeOfNumbers) {
    const auto chances = faultPlaces(downFrom(hostHop, 100'000));

    EXPECT_NEAR(chances[hostHop], 1, 1e-9);
}

TEST(FaultPlace, WithoutAPathToTheHostThereIsNone) {
    Evidence evidence = downFrom(hostHop);
    evidence.hops.pop_back();

    EXPECT_TRUE(faultPlaces(evidence).empty());
}

TEST(FaultPlace, ALossIsBadAndALateAnswerIsByHalfOfWhatTheHostIsLate) {
    EXPECT_TRUE(isBadSample({}, 20, 0));
    EXPECT_FALSE(isBadSample({.ms = 69}, 20, 100));
    EXPECT_TRUE(isBadSample({.ms = 71}, 20, 100));
    EXPECT_FALSE(isBadSample({.ms = 71}, std::nullopt, 100));
    // Less than what networks do when they are well.
    EXPECT_FALSE(isBadSample({.ms = 34}, 20, 15));
}

TEST(FaultPlace, TheDelayIsTheMedianOfTheAnswersAboveTheUsualOne) {
    Evidence evidence = lateFrom(hostHop, 140);
    evidence.pings.push_back({.ms = 10'000});
    EXPECT_DOUBLE_EQ(extraDelay(evidence), 140);

    evidence.quietMs.reset();
    EXPECT_DOUBLE_EQ(extraDelay(evidence), 0);
}

} // namespace
} // namespace tarnwick
