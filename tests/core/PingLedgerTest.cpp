// Every counted ping lands once in the counters that were current when it was sent.
#include "core/PingLedger.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

constexpr StatCounter stored{
    .sent = 100, .replied = 90, .lost = 10, .averageMs = 50, .fastestMs = 5, .slowestMs = 500};

StatCounter answeredOnce(double ms) {
    return {.sent = 1, .replied = 1, .averageMs = ms, .fastestMs = ms, .slowestMs = ms};
}

TEST(PingLedger, BeginsWithAnEmptySessionAndTheStoredFiguresOfTheHost) {
    const PingLedger ledger(stored);
    EXPECT_EQ(ledger.session(), StatCounter());
    EXPECT_EQ(ledger.site(), stored);
    EXPECT_EQ(ledger.bookings(), 0U);
}

TEST(PingLedger, CountsASentPingInBothCounters) {
    PingLedger ledger;
    ledger.sent(7, true);
    EXPECT_EQ(ledger.session().sent, 1);
    EXPECT_EQ(ledger.site().sent, 1);
    EXPECT_EQ(ledger.bookings(), 1U);
}

TEST(PingLedger, KeepsNoTraceOfAnUncountedPing) {
    PingLedger ledger(stored);
    ledger.sent(7, false);
    ledger.replied(7, 20, true);
    ledger.lost(7);
    EXPECT_EQ(ledger, PingLedger(stored));
}

TEST(PingLedger, RecordsAReplyInBothCounters) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.replied(7, 20, true);
    EXPECT_EQ(ledger.session(), answeredOnce(20));
    EXPECT_EQ(ledger.site(), answeredOnce(20));
    EXPECT_EQ(ledger.bookings(), 0U);
}

TEST(PingLedger, ContinuesTheStoredFiguresOfTheHost) {
    PingLedger ledger(stored);
    ledger.sent(7, true);
    ledger.replied(7, 141, true);
    EXPECT_EQ(
        ledger.site(),
        (StatCounter{
            .sent = 101, .replied = 91, .lost = 10, .averageMs = 51, .fastestMs = 5, .slowestMs = 500}));
}

TEST(PingLedger, RecordsALossInBothCounters) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.lost(7);
    EXPECT_EQ(ledger.session(), (StatCounter{.sent = 1, .lost = 1}));
    EXPECT_EQ(ledger.site(), (StatCounter{.sent = 1, .lost = 1}));
}

TEST(PingLedger, CountsAReplyAfterTheTimeoutAsALossOnce) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.replied(7, 5000, false);

    ledger.replied(7, 5000, false);
    ledger.replied(7, 20, true);
    ledger.lost(7);
    EXPECT_EQ(ledger.session(), (StatCounter{.sent = 1, .lost = 1}));
    EXPECT_EQ(ledger.site(), (StatCounter{.sent = 1, .lost = 1}));
}

TEST(PingLedger, LetsNoLossFollowAReply) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.replied(7, 20, true);
    ledger.lost(7);
    EXPECT_EQ(ledger.session(), answeredOnce(20));
}

TEST(PingLedger, LetsNoReplyFollowALoss) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.lost(7);
    ledger.replied(7, 20, true);
    EXPECT_EQ(ledger.session(), (StatCounter{.sent = 1, .lost = 1}));
}

TEST(PingLedger, IgnoresUnknownPings) {
    PingLedger ledger(stored);
    ledger.replied(8, 20, true);
    ledger.replied(8, 5000, false);
    ledger.lost(8);
    ledger.retain({8});
    EXPECT_EQ(ledger, PingLedger(stored));
}

TEST(PingLedger, ANewSessionHasNoRepliesToEarlierPings) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSession();
    ledger.replied(7, 20, true);
    EXPECT_EQ(ledger.session(), StatCounter());
    EXPECT_EQ(ledger.site(), answeredOnce(20));
}

TEST(PingLedger, ANewSessionHasNoLossesOfEarlierPings) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSession();
    ledger.lost(7);
    EXPECT_EQ(ledger.session(), StatCounter());
    EXPECT_EQ(ledger.site(), (StatCounter{.sent = 1, .lost = 1}));
}

TEST(PingLedger, NewSiteFiguresHaveNoRepliesToEarlierPings) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSite(stored);
    ledger.replied(7, 20, true);
    EXPECT_EQ(ledger.site(), stored);
    EXPECT_EQ(ledger.session(), answeredOnce(20));
}

TEST(PingLedger, NewSiteFiguresHaveNoLossesOfEarlierPings) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSite(stored);
    ledger.lost(7);
    EXPECT_EQ(ledger.site(), stored);
    EXPECT_EQ(ledger.session(), (StatCounter{.sent = 1, .lost = 1}));
}

TEST(PingLedger, LeavesTheSessionAndItsBookingsAloneWhenTheSiteIsReplaced) {
    PingLedger ledger;
    ledger.sent(7, true);
    const StatCounter session = ledger.session();
    ledger.resetSite(stored);
    EXPECT_EQ(ledger.session(), session);
    EXPECT_EQ(ledger.bookings(), 1U);
    EXPECT_EQ(ledger.site(), stored);
}

TEST(PingLedger, LeavesTheSiteAndItsBookingsAloneWhenTheSessionIsReset) {
    PingLedger ledger(stored);
    ledger.sent(7, true);
    const StatCounter site = ledger.site();
    ledger.resetSession();
    EXPECT_EQ(ledger.site(), site);
    EXPECT_EQ(ledger.bookings(), 1U);
}

TEST(PingLedger, CountsPingsSentAfterAResetInTheFreshCounter) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSession();
    ledger.sent(8, true);
    ledger.replied(7, 90, true);
    ledger.replied(8, 20, true);
    EXPECT_EQ(ledger.session(), answeredOnce(20));
    EXPECT_EQ(ledger.site().replied, 2);
}

TEST(PingLedger, TellsTwoResetsApart) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSession();
    ledger.sent(8, true);
    ledger.resetSession();
    ledger.replied(7, 20, true);
    ledger.replied(8, 20, true);
    EXPECT_EQ(ledger.session(), StatCounter());
}

TEST(PingLedger, BooksAPingAnewWhenItsIdIsSentAgain) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.resetSession();
    ledger.sent(7, true);
    ledger.replied(7, 20, true);
    EXPECT_EQ(ledger.session(), answeredOnce(20));
    EXPECT_EQ(ledger.bookings(), 0U);
}

TEST(PingLedger, ForgetsThePingsThatAreNotRetained) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.retain({});
    EXPECT_EQ(ledger.bookings(), 0U);
    ledger.lost(7);
    EXPECT_EQ(ledger.session(), (StatCounter{.sent = 1}));
    EXPECT_EQ(ledger.site(), (StatCounter{.sent = 1}));
}

TEST(PingLedger, KeepsThePingsThatAreRetained) {
    PingLedger ledger;
    ledger.sent(7, true);
    ledger.sent(8, true);
    ledger.retain({8, 9});
    EXPECT_EQ(ledger.bookings(), 1U);
    ledger.lost(8);
    EXPECT_EQ(ledger.session().lost, 1);
}

TEST(PingLedger, ChangesNothingWhenEveryPingIsRetained) {
    PingLedger ledger;
    ledger.sent(7, true);
    const PingLedger before = ledger;
    ledger.retain({7});
    EXPECT_EQ(ledger, before);
}

TEST(PingLedger, DiffersAfterAResetEvenWithTheSameFigures) {
    PingLedger ledger;
    ledger.resetSession();
    EXPECT_NE(ledger, PingLedger());
}

} // namespace
} // namespace tarnwick
