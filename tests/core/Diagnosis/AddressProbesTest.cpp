// Probes of the host's last address: how often, and what follows from their answers.
#include "core/Diagnosis/AddressProbes.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarnwick {
namespace {

class AddressProbesTest : public testing::Test {
protected:
    /// One a second from `begin` on, of which those are answered after 10 ms.
    void probe(double begin, const std::vector<bool>& answered) {
        for (const bool isAnswered : answered) {
            const auto id = probes.probe(begin);
            ASSERT_TRUE(id);
            if (isAnswered) {
                probes.answered(*id, begin + 0.01);
            }
            begin += 1;
        }
    }

    AddressProbes probes{1000};
};

TEST_F(AddressProbesTest, AtMostOneASecondIsDue) {
    EXPECT_EQ(probes.probe(10), 1000U);
    EXPECT_FALSE(probes.probe(10.1));
    EXPECT_EQ(probes.probe(10.99), 1001U); // by a tick that comes a little too soon
    EXPECT_FALSE(probes.probe(11.2));
    EXPECT_EQ(probes.probe(12), 1002U);
}

TEST_F(AddressProbesTest, NothingIsKnownBeforeAnAnswerCanBeExpected) {
    EXPECT_FALSE(probes.answers(10));
    probe(10, {false});

    EXPECT_FALSE(probes.answers(12));
    EXPECT_EQ(probes.answers(12.1), false);
}

TEST_F(AddressProbesTest, AnAnswerIsKnownAtOnce) {
    probe(10, {true});

    EXPECT_EQ(probes.answers(10.01), true);
}

TEST_F(AddressProbesTest, OneLostAmongThreeSaysNothing) {
    probe(10, {true, false, false});
    EXPECT_EQ(probes.answers(14.5), true);

    probe(13, {false});
    EXPECT_EQ(probes.answers(15.5), false);
}

TEST_F(AddressProbesTest, AnAnswerThatComesTooLateIsNone) {
    const auto id = probes.probe(10);
    probes.answered(*id, 12.1);

    EXPECT_EQ(probes.answers(13), false);
}

TEST_F(AddressProbesTest, SamplesAreThoseOfALaterTimeThatAreSettled) {
    probe(10, {true, false, true, false});
    probes.answered(999, 13.1); // not one of them
    const std::vector<HopSample> samples = probes.samples(11, 13.5);

    ASSERT_EQ(samples.size(), 2U);
    EXPECT_FALSE(samples[0].ms);
    EXPECT_NEAR(samples[1].ms.value_or(0), 10, 0.001);
}

TEST_F(AddressProbesTest, ASecondAnswerChangesNothing) {
    const auto id = probes.probe(10);
    probes.answered(*id, 10.01);
    probes.answered(*id, 11);

    EXPECT_NEAR(probes.samples(0, 13)[0].ms.value_or(0), 10, 0.001);
}

TEST_F(AddressProbesTest, WhatIsForgottenIsNotKnown) {
    probe(10, {true});
    probes.forget();

    EXPECT_FALSE(probes.answers(13));
    EXPECT_EQ(probes.probe(10.5), 1001U); // ids are not used again
}

} // namespace
} // namespace tarnwick
