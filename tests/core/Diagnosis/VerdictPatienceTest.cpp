// How soon a verdict is said.
#include "core/Diagnosis/VerdictPatience.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tarnwick {
namespace {

constexpr auto down = Trouble::down;
constexpr auto degraded = Trouble::degraded;

Verdict atProvider(Likelihood likelihood) {
    return {.blame = Blame::provider, .likelihood = likelihood, .evidence = "Nothing beyond it answers."};
}

std::string said(
    Likelihood likelihood, Trouble trouble, double seconds, const std::optional<Verdict>& shown = {}) {
    const auto verdict = sayable(atProvider(likelihood), trouble, seconds, shown);
    return verdict ? std::string(nameOf(verdict->blame)) : "nothing";
}

TEST(VerdictPatienceTest, WhatIsCertainIsSaidAtOnce) {
    EXPECT_EQ(said(Likelihood::certain, down, 0), "provider");
    EXPECT_EQ(said(Likelihood::certain, degraded, 0), "provider");
}

TEST(VerdictPatienceTest, WhatIsLikelyIsSaidAtOnceWhenDownAndAfterFourSecondsWhenSlow) {
    EXPECT_EQ(said(Likelihood::likely, down, 0), "provider");
    EXPECT_EQ(said(Likelihood::likely, degraded, 3.9), "nothing");
    EXPECT_EQ(said(Likelihood::likely, degraded, 4), "provider");
}

TEST(VerdictPatienceTest, WhatIsPossibleWaits) {
    EXPECT_EQ(said(Likelihood::possible, down, 3.9), "nothing");
    EXPECT_EQ(said(Likelihood::possible, down, 4), "provider");
    EXPECT_EQ(said(Likelihood::possible, degraded, 4.9), "nothing");
    EXPECT_EQ(said(Likelihood::possible, degraded, 5), "unclear");
    EXPECT_EQ(said(Likelihood::possible, degraded, 14.9), "unclear");
    EXPECT_EQ(said(Likelihood::possible, degraded, 15), "provider");
}

TEST(VerdictPatienceTest, TheOwnLoadIsNamedAsSoonAsItIsMeasured) {
    const Verdict load{.blame = Blame::ownLoad, .likelihood = Likelihood::possible};
    EXPECT_EQ(sayable(load, degraded, 3.9, {}), std::nullopt);
    EXPECT_EQ(sayable(load, degraded, 4, {}), load);
}

TEST(VerdictPatienceTest, WhoIsNamedStaysNamedWhenThatIsOnlyPossible) {
    const Verdict named{.blame = Blame::host, .likelihood = Likelihood::likely};
    EXPECT_EQ(said(Likelihood::possible, degraded, 5, named), "provider");
    EXPECT_EQ(said(Likelihood::possible, down, 1, named), "provider");
    EXPECT_EQ(said(Likelihood::possible, degraded, 5, Verdict{}), "unclear"); // nobody was named
}

} // namespace
} // namespace tarnwick
