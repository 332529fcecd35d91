// What the pings of the scoring window tell a diagnosis.
#include "core/Diagnosis/PingWindow.h"

#include <gtest/gtest.h>

#include <optional>

namespace tarnwick {
namespace {

/// One a second up to `last`; each answered after so many milliseconds, or not.
std::vector<PendingPing> pingsUpTo(double last, const std::vector<std::optional<double>>& answers) {
    std::vector<PendingPing> pings;
    double sent = last - static_cast<double>(answers.size()) + 1;
    for (const auto& ms : answers) {
        pings.push_back(
            {.id = pings.size(),
             .sent = sent,
             .reply = ms ? std::optional(sent + *ms / 1000) : std::nullopt});
        sent += 1;
    }
    return pings;
}

constexpr auto none = std::nullopt;

TEST(PingWindowTest, LateIsTwiceTheUsualAndAHundredMillisecondsAboveIt) {
    EXPECT_TRUE(areAnswersLate(pingsUpTo(100, {111, 111, 111}), 10, 101));
    EXPECT_FALSE(areAnswersLate(pingsUpTo(100, {109, 109, 109}), 10, 101)); // too little
    EXPECT_TRUE(areAnswersLate(pingsUpTo(100, {401, 401, 401}), 200, 101));
    EXPECT_FALSE(areAnswersLate(pingsUpTo(100, {399, 399, 399}), 200, 101)); // not twice
}

TEST(PingWindowTest, TheMedianCounts) {
    EXPECT_FALSE(areAnswersLate(pingsUpTo(100, {10, 900, 900, 10, 10}), 10, 101));
    EXPECT_TRUE(areAnswersLate(pingsUpTo(100, {900, 10, 900, none, 900}), 10, 101));
}

TEST(PingWindowTest, TwoAnswersAreTooFewToBeCalledLate) {
    EXPECT_FALSE(areAnswersLate(pingsUpTo(100, {none, 900, 900}), 10, 101));
}

TEST(PingWindowTest, NothingIsLateWhereTheUsualIsUnknown) {
    EXPECT_FALSE(areAnswersLate(pingsUpTo(100, {900, 900, 900}), none, 101));
}

TEST(PingWindowTest, OnlyTheLatestSixSecondsAreLate) {
    const auto pings = pingsUpTo(100, {900, 900, 900});

    EXPECT_TRUE(areAnswersLate(pings, 10, 104));
    EXPECT_FALSE(areAnswersLate(pings, 10, 104.5)); // the first one is older
}

TEST(PingWindowTest, SilenceIsSuspiciousAfterTwoAndAHalfSeconds) {
    const auto pings = pingsUpTo(100, {10, none, none});

    EXPECT_TRUE(isSilenceSuspicious(pings, 98, 100.5));
    EXPECT_FALSE(isSilenceSuspicious(pings, 98, 100.4));
}

TEST(PingWindowTest, SilenceIsNotSuspiciousWithoutAPingThatWaits) {
    EXPECT_FALSE(isSilenceSuspicious(pingsUpTo(100, {10}), 97, 100.5));
    EXPECT_FALSE(isSilenceSuspicious(pingsUpTo(100, {none}), 90, 100.9)); // it waits for less than a second
}

TEST(PingWindowTest, OnePingThatWasLostBeforeTheLastAnswerIsNotSuspicious) {
    // A minute apart.
    const std::vector<PendingPing> pings{{.sent = 40, .lost = true}, {.id = 1, .sent = 100, .reply = 100.02}};
    EXPECT_FALSE(isSilenceSuspicious(pings, 100.02, 110));
}

TEST(PingWindowTest, AHostThatNeverAnsweredIsNotSuspicious) {
    EXPECT_FALSE(isSilenceSuspicious(pingsUpTo(100, {none, none, none}), none, 105));
}

TEST(PingWindowTest, SilenceBeginsWithTheFirstPingWithoutAnAnswer) {
    EXPECT_EQ(silentSince(pingsUpTo(100, {10, none, 10, none, none})), 99);
    EXPECT_EQ(silentSince(pingsUpTo(100, {none, none})), 99);
    EXPECT_EQ(silentSince(pingsUpTo(100, {none, 10})), 0);
    EXPECT_EQ(silentSince({}), 0);
}

TEST(PingWindowTest, SettledIsWhatIsAnsweredLostOrTooOldForAnAnswer) {
    auto pings = pingsUpTo(100, {20, none, none, 30, none});
    pings[2].lost = true;
    const SettledPings settled = settledPings(pings, 97, 100);

    ASSERT_EQ(settled.before.size(), 1U);
    EXPECT_NEAR(settled.before[0].ms.value_or(0), 20, 0.001);
    ASSERT_EQ(settled.since.size(), 3U); // the last ping may still be answered
    EXPECT_FALSE(settled.since[0].ms);
    EXPECT_FALSE(settled.since[1].ms);
    EXPECT_NEAR(settled.since[2].ms.value_or(0), 30, 0.001);
}

} // namespace
} // namespace tarnwick
