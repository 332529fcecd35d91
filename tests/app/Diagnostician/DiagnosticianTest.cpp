// When evidence is gathered, and what is said of it when.
#include "tests/app/Diagnostician/DiagnosticianTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sys/socket.h>

namespace tarnwick {
namespace {

using namespace simulation;

constexpr std::size_t probesToLearn = 15; // three of each of five hops

TEST_F(DiagnosticianTest, WhileAllIsWellThePathIsLearntOnce) {
    run(600);

    EXPECT_EQ(network.sent.size(), probesToLearn);
    EXPECT_TRUE(names.asked.empty());
    EXPECT_TRUE(service.asked.empty());
    EXPECT_TRUE(addressNames.asked.empty());
    EXPECT_EQ(told(), "nothing");
    EXPECT_TRUE(diagnostician.path().empty());
}

TEST_F(DiagnosticianTest, ThePathIsLearntAnewAfterItHasChanged) {
    run(60);

    diagnostician.pathChanged();
    run(60);

    EXPECT_EQ(network.sent.size(), 2 * probesToLearn);
}

const std::vector<std::string> elsewhere{"10.1.1.1", "198.51.100.1", "203.0.113.1", "203.0.113.9"};

TEST_F(DiagnosticianTest, APathThatChangesInTheMiddleOfTroubleIsLearntAnew) {
    run(60);
    goDown(2);
    run(5);
    network.hops = elsewhere;
    diagnostician.pathChanged();
    run(5);
    EXPECT_EQ(told(), "unclear"); // no way that is known, so far

    network.silentFrom = 0;
    run(20); // finds the host, but tells nothing of what is usual
    hostMs = 10;
    situation.trouble = Trouble::none;
    network.sent.clear();
    run(60);
    EXPECT_GE(network.sent.size(), 3 * elsewhere.size());
    goDown(3);
    run(5);

    EXPECT_EQ(told(), "beyondProvider");
    EXPECT_EQ(diagnostician.path().size(), 4U);
}

TEST_F(DiagnosticianTest, AWayThatHasChangedUnnoticedMakesNothingLikelyAndIsLearntAnewAfterwards) {
    run(60);
    network.hops = {"192.0.2.1", "198.51.100.1", "198.51.100.12", "203.0.113.65", "203.0.113.9"};
    goDown(5);
    for (int second = 0; second < 30; ++second) {
        run(1);
        const auto& verdict = diagnostician.verdict();
        EXPECT_TRUE(!verdict || verdict->likelihood == Likelihood::possible);
    }
    network.silentFrom = 0;
    network.sent.clear();
    hostMs = 10;
    situation.trouble = Trouble::none;
    run(60);
    EXPECT_GE(network.sent.size(), probesToLearn);

    goDown(5);
    run(15);
    EXPECT_EQ(told(), "host");
    EXPECT_EQ(diagnostician.verdict()->likelihood, Likelihood::likely);
}

TEST_F(DiagnosticianTest, TheUsualLatencyOfAnotherNetworkIsForgotten) {
    run(60);
    diagnostician.pathChanged();
    situation.usualMs.reset(); // nothing is known of this one
    hostMs = 150;
    network.lateFrom = 1;
    network.extraMs = 140;
    run(30);

    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianTest, InTroubleTooTheUsualLatencyOfAnotherNetworkIsForgotten) {
    run(60);
    goDown(2);
    run(5);
    diagnostician.pathChanged();
    network.silentFrom = 0;
    network.hops = {"203.0.113.9"};
    hostMs = 150;
    situation.trouble = Trouble::degraded;
    for (std::uint64_t second = 0; second < 30; ++second) {
        link.state->sentBytes = second * 1'125'000; // 9 Mbit/s
        link.state->receivedBytes = 0;
        run(1);
    }

    EXPECT_NE(told(), "ownLoad"); // it has not risen here
}

TEST_F(DiagnosticianTest, AnotherNetworkIsProbedOnceTheHostHasAnsweredThere) {
    run(60);
    hostMs.reset();
    diagnostician.pathChanged();
    network.sent.clear();
    run(2);
    EXPECT_TRUE(network.sent.empty());

    hostMs = 10;
    run(2);
    EXPECT_FALSE(network.sent.empty());
}

TEST_F(DiagnosticianTest, AFloodOfAnswersIsReadInParts) {
    run(60);
    network.copies = 1000;
    diagnostician.pathChanged();
    run(4);

    EXPECT_LE(network.mostReadAtOnce, 100);
    EXPECT_GE(network.read, 2000); // all the same
}

TEST_F(DiagnosticianTest, ThePathToAnotherAddressIsAnotherOne) {
    run(60);

    situation.address->sockaddr = {2};
    run(60);
    EXPECT_EQ(network.sent.size(), 2 * probesToLearn);
    EXPECT_EQ(network.opened, 1);

    situation.address->family = AF_INET6;
    run(60);
    EXPECT_EQ(network.opened, 2);
}

TEST_F(DiagnosticianTest, AnAddressThatIsTriedInAnOutageDoesNotTakeThePathsPlace) {
    run(60);
    cut(2);
    situation.address->family = AF_INET6;
    run(4);
    situation.trouble = Trouble::down;
    run(10);

    EXPECT_EQ(network.opened, 1);
    EXPECT_EQ(told(), "provider");
}

TEST_F(DiagnosticianTest, NothingIsSentBeforeTheHostHasAnswered) {
    hostMs.reset();
    run(2);

    EXPECT_TRUE(network.sent.empty());
}

TEST_F(DiagnosticianTest, IsNamedWithinFiveSecondsOfDown) {
    run(60);
    goDown(2);
    run(5);

    EXPECT_EQ(told(), "provider");
    EXPECT_EQ(diagnostician.path().size(), 5U);
}

/// So many seconds after the first probe.
class CutWhileLearning : public DiagnosticianTest, public testing::WithParamInterface<int> {};

TEST_P(CutWhileLearning, AnAnswerFromBeforeTheCutProvesNothing) {
    run(GetParam());
    cut(4);
    run(2);
    situation.trouble = Trouble::degraded; // so it is called first
    for (int second = 0; second < 20; ++second) {
        run(1);
        situation.trouble = second < 5 ? Trouble::degraded : Trouble::down;
        EXPECT_THAT(told(), testing::AnyOf("nothing", "unclear", "beyondProvider"));
    }
}

TEST_F(DiagnosticianTest, SilenceAfterMuchLossIsNoProof) {
    run(60);
    for (int second = 0; second < 20; ++second) {
        hostMs = second % 3 == 0 ? std::optional(10.0) : std::nullopt;
        run(1);
    }
    goDown(2);
    run(5);

    EXPECT_EQ(told(), "provider");
    EXPECT_EQ(diagnostician.verdict()->likelihood, Likelihood::possible);
}

INSTANTIATE_TEST_SUITE_P(EachSecond, CutWhileLearning, testing::Range(12, 18));

TEST_F(DiagnosticianTest, AtMostOneProbeASecondIsSentWhileDown) {
    run(60);
    goDown(4);
    network.sent.clear();
    run(60);

    EXPECT_LE(network.sent.size(), 60U);
    EXPECT_GE(network.sent.size(), 55U);
    EXPECT_EQ(told(), "beyondProvider");
}

TEST_F(DiagnosticianTest, AfterTroubleEvidenceIsGatheredForHalfAMinute) {
    run(60);
    goDown(2);
    run(20);
    recover();
    network.sent.clear();
    const int asked = link.asked;
    for (int second = 0; second < 30; ++second) {
        run(1);
        EXPECT_EQ(told(), "nothing");
        EXPECT_TRUE(diagnostician.path().empty());
    }
    EXPECT_GE(network.sent.size(), 29U);
    EXPECT_LE(network.sent.size(), 31U);
    EXPECT_GE(link.asked - asked, 29);
    EXPECT_LE(link.asked - asked, 31);
    EXPECT_TRUE(names.asked.empty());
    EXPECT_EQ(addressNames.asked.size(), 5U); // while it lasted

    network.sent.clear();
    const int askedInAll = link.asked;
    run(600);

    EXPECT_LE(network.sent.size(), 1U); // that was due already
    EXPECT_EQ(link.asked, askedInAll);
}

TEST_F(DiagnosticianTest, TroubleThatComesBackIsJudgedByWhatWasSeenMeanwhile) {
    run(60);
    goDown(2);
    run(20);
    recover();
    network.lateFrom = 1; // not so late that it is trouble
    network.extraMs = 5;
    run(10);
    link.state->router = "192.0.2.1";
    link.state->neighbor = NeighborState::failed;
    run(2);
    situation.trouble = Trouble::down;
    run(1);

    EXPECT_EQ(told(), "localNetwork");
    ASSERT_EQ(diagnostician.path().size(), 5U);
    for (std::size_t hop = 0; hop < 5; ++hop) { // as it was learnt before all trouble
        EXPECT_NEAR(diagnostician.path()[hop].quietMs.value_or(0), 2 * static_cast<double>(hop + 1), 0.001);
    }
}

TEST_F(DiagnosticianTest, AFewLostPingsAreNoTroubleThatLastsLonger) {
    run(60);
    hostMs.reset();
    run(5);
    EXPECT_GT(network.sent.size(), probesToLearn); // it looked suspicious
    hostMs = 10;
    run(1);
    network.sent.clear();
    run(60);

    EXPECT_LE(network.sent.size(), 1U); // that was due already
}

TEST_F(DiagnosticianTest, InAnotherNetworkNothingIsGatheredForTheTroubleBefore) {
    run(60);
    goDown(2);
    run(20);
    recover();
    run(5);
    hostMs.reset();
    diagnostician.pathChanged();
    network.sent.clear();
    const int asked = link.asked;
    run(2);

    EXPECT_LE(network.sent.size(), 1U); // that was due already
    EXPECT_EQ(link.asked, asked);
}

TEST_F(DiagnosticianTest, TroubleInTheMiddleOfLearningBeginsItAnewLater) {
    run(3);
    goDown(2);
    run(20);
    network.silentFrom = 0;
    hostMs = 10;
    situation.trouble = Trouble::none;
    network.sent.clear();

    run(60);

    EXPECT_GE(network.sent.size(), probesToLearn);
    EXPECT_LE(network.sent.size(), probesToLearn + 1);
}

TEST_F(DiagnosticianTest, ALatencyThatRisesIsTroubleBeforeTheBarsFall) {
    run(60);
    hostMs = 150;
    network.lateFrom = 4;
    network.extraMs = 140;
    run(10);

    EXPECT_EQ(told(), "beyondProvider");
}

TEST_F(DiagnosticianTest, ALongerWayIsTheUsualOneAfterFiveMinutes) {
    run(60);
    hostMs = 150;
    network.lateFrom = 4;
    network.extraMs = 140;
    run(290);
    EXPECT_EQ(told(), "beyondProvider");

    situation.usualMs = 150;
    run(20);

    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianTest, ARoutersWordCounts) {
    run(60);
    network.refusingHop = 4;
    hostMs.reset();
    run(4);
    situation.trouble = Trouble::down;
    run(5);

    EXPECT_EQ(told(), "host");
}

TEST_F(DiagnosticianTest, ARouterThatForbidsTheWayIsToldFromOneThatHasNone) {
    run(60);
    network.refusingHop = 1;
    network.refusal = ProbeAnswer::Kind::forbidden;
    hostMs.reset();
    run(4);
    situation.trouble = Trouble::down;
    run(10);

    ASSERT_TRUE(diagnostician.verdict());
    EXPECT_EQ(told(), "localNetwork");
    EXPECT_EQ(diagnostician.verdict()->evidence, "Your router (192.0.2.1) forbids the way to 203.0.113.9.");
}

TEST_F(DiagnosticianTest, HopsHaveTheirNamesWhileAVerdictStands) {
    addressNames.names = {{"192.0.2.1", "router.example"}, {"203.0.113.9", "host.example"}};
    run(60);
    goDown(2);
    run(10);

    ASSERT_EQ(diagnostician.path().size(), 5U);
    EXPECT_EQ(diagnostician.path()[0].name, "router.example");
    EXPECT_EQ(diagnostician.path()[1].name, "");
    EXPECT_EQ(diagnostician.path()[4].name, "host.example");
}

TEST_F(DiagnosticianTest, NamesAreAskedForOnceInEachTrouble) {
    addressNames.names = {{"192.0.2.1", "router.example"}};
    run(60);
    goDown(2);
    run(30);
    EXPECT_EQ(addressNames.asked.size(), 5U);

    network.silentFrom = 0;
    hostMs = 10;
    situation.trouble = Trouble::none;
    run(60);
    goDown(2);
    run(30);
    EXPECT_EQ(addressNames.asked.size(), 5U + 4U); // all but the one that has a name
}

TEST_F(DiagnosticianTest, AnotherNetworkHasOtherNames) {
    addressNames.names = {{"192.0.2.1", "router.example"}};
    run(60);
    goDown(2);
    run(30);
    addressNames.names = {{"192.0.2.1", "gateway.example"}};
    diagnostician.pathChanged();
    run(5);

    EXPECT_EQ(diagnostician.path()[0].name, "gateway.example");
}

TEST_F(DiagnosticianTest, AnotherHostBeginsFromNothing) {
    run(60);
    goDown(2);
    run(5);

    situation = {.host = "other.example"};
    run(1);

    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianTest, TheLinkIsLookedAtOnceAndThenOnlyInTrouble) {
    run(60);
    EXPECT_EQ(link.asked, 1);

    goDown(1);
    link.state->link.hasCarrier = false;
    run(2);

    EXPECT_GT(link.asked, 1);
    ASSERT_TRUE(diagnostician.verdict());
    EXPECT_EQ(diagnostician.verdict()->evidence, "No network: eth0 has no cable.");
}

TEST_F(DiagnosticianTest, AFailedRouterIsCertain) {
    run(60);
    goDown(1);
    link.state->router = "192.0.2.1";
    link.state->neighbor = NeighborState::failed;
    run(2);

    ASSERT_TRUE(diagnostician.verdict());
    EXPECT_EQ(diagnostician.verdict()->likelihood, Likelihood::certain);
    EXPECT_EQ(diagnostician.verdict()->evidence, "Your router (192.0.2.1) does not answer.");
}

TEST_F(DiagnosticianTest, LoadThatGoesWithTheDelayIsTold) {
    run(60);
    hostMs = 150;
    network.lateFrom = 2;
    network.extraMs = 140;
    for (std::uint64_t second = 0; second < 10; ++second) {
        link.state->sentBytes = second * 1'125'000; // 9 Mbit/s
        link.state->receivedBytes = 0;
        run(1);
    }

    ASSERT_TRUE(diagnostician.verdict());
    EXPECT_EQ(
        diagnostician.verdict()->evidence,
        "Latency rises from 10 to 150 ms while this computer uploads 9 Mbit/s.");
}

TEST_F(DiagnosticianTest, WithoutAnAnswerAboutTheLinkThePathIsJudged) {
    link.state.reset();
    run(60);
    goDown(2);
    run(5);

    EXPECT_EQ(told(), "provider");
}

TEST_F(DiagnosticianTest, WhatTheSystemRefusesIsThisComputers) {
    situation.address.reset();
    situation.startError = PingError::socket("Permission denied");
    situation.trouble = Trouble::down;
    hostMs.reset();
    run(1);

    ASSERT_TRUE(diagnostician.verdict());
    EXPECT_EQ(diagnostician.verdict()->evidence, "This computer can't send: Permission denied.");
}

} // namespace
} // namespace tarnwick
