// How long a verdict stays.
#include "core/Diagnosis/SteadyVerdict.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

const Verdict provider{.blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "one"};
const Verdict host{.blame = Blame::host, .likelihood = Likelihood::certain, .evidence = "other"};
const Verdict notClear{};

TEST(SteadyVerdict, TheFirstIsShownAtOnce) {
    SteadyVerdict steady;

    EXPECT_EQ(steady.update(100, provider), provider);
}

TEST(SteadyVerdict, AnotherBlameWaitsUntilTheFirstHasStayed) {
    SteadyVerdict steady;
    (void)steady.update(100, provider);

    EXPECT_EQ(steady.update(109.9, host), provider);
    EXPECT_EQ(steady.update(110, host), host);
    EXPECT_EQ(steady.update(119.9, provider), host);
    EXPECT_EQ(steady.update(120, provider), provider);
}

TEST(SteadyVerdict, TheSentenceFollowsTheEvidence) {
    SteadyVerdict steady;
    (void)steady.update(100, provider);
    Verdict later = provider;
    later.evidence = "two";

    EXPECT_EQ(steady.update(101, later), later);
}

TEST(SteadyVerdict, UnclearGivesWayAtOnce) {
    SteadyVerdict steady;
    (void)steady.update(100, notClear);

    EXPECT_EQ(steady.update(101, host), host);
    EXPECT_EQ(steady.update(102, notClear), host);
}

TEST(SteadyVerdict, IsWithdrawnAtOnce) {
    SteadyVerdict steady;
    (void)steady.update(100, provider);

    EXPECT_EQ(steady.update(101, std::nullopt), std::nullopt);
    EXPECT_EQ(steady.update(102, host), host);
}

} // namespace
} // namespace tarnwick
