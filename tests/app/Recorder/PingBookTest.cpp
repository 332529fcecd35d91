// Since when a host is silent, in whichever order pings come to their outcome.
#include "app/Recorder/PingBook.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

class PingBookTest : public testing::Test {
protected:
    PingBookTest() {
        pings.interrupted(second(0));
        for (int number = 1; number <= 8; ++number) {
            pings.sent(static_cast<std::uint64_t>(number), true, second(number));
        }
    }

    [[nodiscard]] static HistoryTime second(int number) {
        return std::chrono::sys_days(std::chrono::year(2026) / 11 / 23) + std::chrono::seconds(number);
    }

    PingBook pings;
};

TEST_F(PingBookTest, ALossBeforeTheLastAnswerIsNoSilence) {
    pings.replied(4, 20, true, second(4));
    pings.lost(2);

    EXPECT_EQ(pings.silence().since, second(5));
    EXPECT_EQ(pings.silence().lost, 0);
}

TEST_F(PingBookTest, TheSilenceBeginsWithTheFirstOfTheLostOnes) {
    pings.replied(4, 20, true, second(4));
    for (const std::uint64_t id : {8U, 6U, 5U, 7U}) {
        EXPECT_TRUE(pings.lost(id));
    }

    EXPECT_EQ(pings.silence().since, second(5));
    EXPECT_EQ(pings.silence().lost, 4);
}

TEST_F(PingBookTest, ALateAnswerToALostPingEndsTheSilence) {
    pings.lost(6);
    pings.lost(5);
    EXPECT_FALSE(pings.lost(5)) << "it was lost already";
    pings.replied(5, 4000, false, second(9));

    EXPECT_EQ(pings.silence().lost, 0);
    EXPECT_EQ(pings.silence().since, second(7));
}

TEST_F(PingBookTest, WithoutAPingSinceItBeginsWithTheLastAnswer) {
    pings.replied(8, 20, true, second(9));

    EXPECT_EQ(pings.silence().since, second(9));
}

} // namespace
} // namespace tarnwick
