// The names by which programs read verdicts.
#include "core/Diagnosis/Verdict.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(Verdict, ItsBlameComesBackFromItsName) {
    for (int number = 0; number <= static_cast<int>(Blame::unclear); ++number) {
        const auto blame = static_cast<Blame>(number);
        EXPECT_EQ(blameNamed(nameOf(blame)), blame) << nameOf(blame);
    }
    EXPECT_EQ(blameNamed("theDog"), Blame::unclear);
}

TEST(Verdict, ItsLikelihoodComesBackFromItsName) {
    for (const Likelihood likelihood : {Likelihood::possible, Likelihood::likely, Likelihood::certain}) {
        EXPECT_EQ(likelihoodNamed(nameOf(likelihood)), likelihood);
    }
    EXPECT_EQ(likelihoodNamed("hardly"), Likelihood::possible);
}

} // namespace
} // namespace tarnwick
