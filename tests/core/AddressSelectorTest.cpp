// Which of a host's addresses is pinged, send by send.
#include "core/AddressSelector.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

AddressSelector selectorOf(int count) {
    return {.count = count, .deadline = 4};
}

TEST(AddressSelector, BeginsWithTheFirstAddressAndNoClock) {
    const AddressSelector selector = selectorOf(3);
    EXPECT_EQ(selector.index, 0);
    EXPECT_EQ(selector.waitingSince, std::nullopt);
}

TEST(AddressSelector, WithoutAddressesHasADeadlineOfFourSeconds) {
    const AddressSelector none;
    EXPECT_EQ(none.count, 0);
    EXPECT_EQ(none.deadline, 4.0);
}

TEST(AddressSelector, StaysBeforeTheDeadlineAndMovesExactlyAtIt) {
    AddressSelector selector = selectorOf(2);
    for (const double now : {0.0, 1.0, 2.0, 3.0}) {
        EXPECT_FALSE(selector.sent(now)) << now;
    }
    EXPECT_EQ(selector.index, 0);
    EXPECT_TRUE(selector.sent(4));
    EXPECT_EQ(selector.index, 1);
}

TEST(AddressSelector, CountsTheSilenceFromTheFirstUnansweredSend) {
    AddressSelector selector = selectorOf(2);
    selector.sent(10);
    selector.sent(12);
    EXPECT_EQ(selector.waitingSince, 10);
}

TEST(AddressSelector, GivesTheNextAddressItsFullTime) {
    AddressSelector selector = selectorOf(2);
    selector.sent(0);
    selector.sent(4);
    EXPECT_EQ(selector.waitingSince, std::nullopt);
    EXPECT_FALSE(selector.sent(5));
    EXPECT_FALSE(selector.sent(8.9));
    EXPECT_TRUE(selector.sent(9));
}

TEST(AddressSelector, WrapsFromTheLastAddressToTheFirst) {
    AddressSelector selector{.count = 3, .deadline = 4, .index = 2};
    EXPECT_TRUE(selector.sendFailed());
    EXPECT_EQ(selector.index, 0);
}

TEST(AddressSelector, WithADeadlineOfZeroMovesAtEverySend) {
    AddressSelector selector{.count = 2, .deadline = 0};
    EXPECT_TRUE(selector.sent(0));
    EXPECT_TRUE(selector.sent(0));
    EXPECT_EQ(selector.index, 0);
}

TEST(AddressSelector, KeepsPingingALoneAddressAndStartsItsClockAgain) {
    AddressSelector selector = selectorOf(1);
    selector.sent(0);
    EXPECT_FALSE(selector.sent(4));
    EXPECT_EQ(selector.waitingSince, std::nullopt);
    EXPECT_FALSE(selector.sent(5));
    EXPECT_EQ(selector.waitingSince, 5);
    EXPECT_EQ(selector.index, 0);
}

TEST(AddressSelector, StopsItsClockWhenTheCurrentAddressReplies) {
    AddressSelector selector = selectorOf(2);
    selector.sent(0);
    EXPECT_FALSE(selector.replied(0));
    EXPECT_EQ(selector.waitingSince, std::nullopt);
    EXPECT_FALSE(selector.sent(100));
    EXPECT_EQ(selector.waitingSince, 100);
}

TEST(AddressSelector, MovesOnAtOnceAfterAFailedSend) {
    AddressSelector selector = selectorOf(2);
    selector.sent(0);
    EXPECT_TRUE(selector.sendFailed());
    EXPECT_EQ(selector.index, 1);
    EXPECT_EQ(selector.waitingSince, std::nullopt);
}

TEST(AddressSelector, ComesBackToTheFirstOfTwoAddressesAfterTwoFailedSends) {
    AddressSelector selector = selectorOf(2);
    selector.sendFailed();
    EXPECT_TRUE(selector.sendFailed());
    EXPECT_EQ(selector.index, 0);
}

TEST(AddressSelector, StopsTheClockOfALoneAddressAfterAFailedSend) {
    AddressSelector selector = selectorOf(1);
    selector.sent(0);
    EXPECT_FALSE(selector.sendFailed());
    EXPECT_EQ(selector.waitingSince, std::nullopt);
    EXPECT_EQ(selector.index, 0);
}

TEST(AddressSelector, GoesBackToAnAddressThatAnswersLate) {
    AddressSelector selector{.count = 3, .deadline = 4, .index = 2, .waitingSince = 7};
    EXPECT_TRUE(selector.replied(0));
    EXPECT_EQ(selector.index, 0);
    EXPECT_EQ(selector.waitingSince, std::nullopt);
}

TEST(AddressSelector, NeverMovesWithALoneAddress) {
    AddressSelector selector{.count = 1, .deadline = 4, .index = 1, .waitingSince = 7};
    EXPECT_FALSE(selector.replied(0));
    EXPECT_EQ(selector, (AddressSelector{.count = 1, .deadline = 4, .index = 1}));
}

// Whether the current address was tried in vain.

TEST(AddressSelector, IsInVainFromTheFirstSendToTheFirstReply) {
    AddressSelector selector = selectorOf(2);
    EXPECT_FALSE(selector.isInVain());
    selector.sent(0);
    EXPECT_TRUE(selector.isInVain());
    selector.replied(0);
    EXPECT_FALSE(selector.isInVain());
    selector.sent(1);
    EXPECT_FALSE(selector.isInVain());
}

TEST(AddressSelector, IsInVainOnlyOnceTheNextAddressIsSentTo) {
    AddressSelector selector = selectorOf(2);
    selector.sent(0);
    selector.replied(0);
    selector.sendFailed();
    EXPECT_FALSE(selector.isInVain());
    selector.sent(1);
    EXPECT_TRUE(selector.isInVain());
}

TEST(AddressSelector, IsNotInVainAfterALateReply) {
    AddressSelector selector = selectorOf(2);
    selector.sendFailed();
    selector.replied(0);
    selector.sent(1);
    EXPECT_FALSE(selector.isInVain());
}

class ReplyFromAnUnknownAddress : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(AddressSelector, ReplyFromAnUnknownAddress, testing::Values(-1, 2, 3, 1'000'000));

TEST_P(ReplyFromAnUnknownAddress, ChangesNothing) {
    AddressSelector selector{.count = 2, .deadline = 4, .index = 1, .waitingSince = 7};
    const AddressSelector before = selector;
    EXPECT_FALSE(selector.replied(GetParam()));
    EXPECT_EQ(selector, before);
}

TEST(AddressSelector, WithoutAddressesNeverMoves) {
    AddressSelector none;
    EXPECT_FALSE(none.sent(0));
    EXPECT_FALSE(none.sent(100));
    EXPECT_FALSE(none.sendFailed());
    EXPECT_FALSE(none.replied(0));
    EXPECT_FALSE(none.replied(1));
    EXPECT_EQ(none.index, 0);
}

TEST(AddressSelector, IsEqualOnlyWhenAllItsFieldsAre) {
    const AddressSelector one = selectorOf(2);
    EXPECT_EQ(one, selectorOf(2));
    EXPECT_NE(one, selectorOf(3));
    EXPECT_NE(one, (AddressSelector{.count = 2, .deadline = 5}));
    EXPECT_NE(one, (AddressSelector{.count = 2, .deadline = 4, .index = 1}));
    EXPECT_NE(one, (AddressSelector{.count = 2, .deadline = 4, .index = 0, .waitingSince = 0}));
    EXPECT_NE(one, (AddressSelector{.count = 2, .deadline = 4, .hasAnswered = true}));
}

} // namespace
} // namespace tarnwick
