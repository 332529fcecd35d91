// What is asked while the host's name can't be found or was found late, and what follows from it; and what
// the network service is asked.
#include "tests/app/Diagnostician/DiagnosticianTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tarnwick {
namespace {

using ServerSays = NameServerEvidence::Answer;

constexpr int wholeWay = 64; ///< the hop limit of what is sent to the host's last address

class DiagnosticianNamesTest : public DiagnosticianTest {
protected:
    DiagnosticianNamesTest() {
        situation.host = "one.example";
        names.servers[0].answer = ServerSays::none;
    }

    /// All is well for a minute; then pinging begins anew, and the name can't be found.
    void loseName() {
        run(60);
        loseNameNow();
    }

    void loseNameNow() {
        isPinging = false;
        situation.startError = PingError::resolution("Temporary failure in name resolution");
        situation.trouble = Trouble::down;
        network.sent.clear();
    }

    void findName() {
        isPinging = true;
        situation.startError.reset();
        situation.trouble = Trouble::none;
    }

    /// The lookup that has just ended took so many seconds.
    void lookUp(double seconds) {
        situation.lookup = Lookup{.begun = loop.now() - seconds, .ended = loop.now()};
    }

    [[nodiscard]] std::string evidence() const {
        const auto& verdict = diagnostician.verdict();
        return verdict ? verdict->evidence : "";
    }

    [[nodiscard]] Likelihood likelihood() const {
        return diagnostician.verdict().value_or(Verdict{}).likelihood;
    }

    [[nodiscard]] auto sentToTheLastAddress() const { return std::ranges::count(network.sent, wholeWay); }
};

TEST_F(DiagnosticianNamesTest, ASilentServerIsToBlameWhileTheLastAddressAnswers) {
    loseName();
    run(5);

    EXPECT_EQ(told(), "nameServer");
    EXPECT_EQ(likelihood(), Likelihood::certain);
    EXPECT_EQ(
        evidence(), "Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last address, does.");
}

TEST_F(DiagnosticianNamesTest, TheWayIsToBlameWhereTheLastAddressIsSilent) {
    run(60);
    network.silentFrom = 2;
    loseNameNow();
    run(20);

    EXPECT_EQ(told(), "provider");
}

TEST_F(DiagnosticianNamesTest, WithoutALastAddressTheServerMayBeToBlame) {
    situation.address.reset();
    loseNameNow();
    run(5);

    EXPECT_EQ(told(), "nameServer");
    EXPECT_EQ(likelihood(), Likelihood::possible);
    EXPECT_EQ(evidence(), "Name server 192.0.2.53 does not answer.");
    EXPECT_TRUE(network.sent.empty());
}

TEST_F(DiagnosticianNamesTest, WhereProbesCantBeSentNoOneWaitsForTheLastAddress) {
    network.hasSockets = false;
    loseName();
    run(5);

    EXPECT_EQ(evidence(), "Name server 192.0.2.53 does not answer.");
}

TEST_F(DiagnosticianNamesTest, EachServerIsAskedOnceForTheFamilyThatIsPinged) {
    situation.address->family = AF_INET6;
    loseName();
    run(60);

    ASSERT_EQ(names.asked.size(), 1U);
    EXPECT_EQ(names.asked[0].host, "one.example");
    EXPECT_EQ(names.asked[0].family, AF_INET6);
    EXPECT_EQ(told(), "nameServer");
}

TEST_F(DiagnosticianNamesTest, EachServerIsAskedOnceMoreForEachLookupThatFails) {
    run(60);
    lookUp(0.2);
    loseNameNow();
    run(8);
    EXPECT_EQ(names.asked.size(), 1U);

    situation.lookup = Lookup{.begun = loop.now()}; // the error of the last one stands meanwhile
    run(1);
    EXPECT_EQ(names.asked.size(), 1U);
    situation.lookup->ended = loop.now();
    run(8);
    EXPECT_EQ(names.asked.size(), 2U);
}

TEST_F(DiagnosticianNamesTest, ALookupThatGoesOnIsAskedForOnceUntilAnotherOneFails) {
    run(60);
    isPinging = false;
    situation.lookup = Lookup{.begun = loop.now()};
    run(10);
    EXPECT_EQ(names.asked.size(), 1U);

    situation.lookup.reset(); // given up
    situation.startError = PingError::resolution("lookup timed out");
    run(10);
    EXPECT_EQ(names.asked.size(), 1U);
    EXPECT_EQ(told(), "nameServer");

    situation.lookup = Lookup{.begun = loop.now()};
    run(10);
    EXPECT_EQ(names.asked.size(), 2U);
}

TEST_F(DiagnosticianNamesTest, AServerThatWasSilentWhileTheWayWasCutIsAskedAnewBeforeItIsBlamed) {
    run(60);
    network.silentFrom = 1;
    lookUp(0.2);
    loseNameNow();
    run(20);
    EXPECT_NE(told(), "nameServer");
    EXPECT_EQ(names.asked.size(), 1U);

    network.silentFrom = 0;
    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 20};
    names.delay = 2;
    for (int second = 0; second < 20; ++second) {
        run(1);
        EXPECT_THAT(evidence(), testing::Not(testing::HasSubstr("does not answer; ")));
    }
    EXPECT_EQ(names.asked.size(), 2U);
}

TEST_F(DiagnosticianNamesTest, WhereLookupsFailInARowServersAreAskedEveryFiveSecondsAtMost) {
    run(60);
    loseNameNow();
    for (int count = 0; count < 10; ++count) {
        lookUp(0.1);
        run(2);
    }

    EXPECT_GE(names.asked.size(), 3U);
    for (std::size_t round = 1; round < names.asked.size(); ++round) {
        EXPECT_GE(names.asked[round].at - names.asked[round - 1].at, 5);
    }
}

TEST_F(DiagnosticianNamesTest, ALookupThatFailsSoonAfterAnotherIsAskedForALittleLater) {
    run(60);
    lookUp(0.1);
    loseNameNow();
    run(3);
    lookUp(0.1);
    run(1);
    EXPECT_EQ(names.asked.size(), 1U);
    run(9);

    EXPECT_EQ(names.asked.size(), 2U);
}

TEST_F(DiagnosticianNamesTest, AServerThatAnswersAgainIsNoLongerNamedAfterTheNextLookupThatFails) {
    names.servers = {{.address = "192.0.2.53"}, {.address = "192.0.2.54", .answer = ServerSays::refused}};
    run(60);
    lookUp(0.2);
    loseNameNow();
    run(10);
    EXPECT_THAT(evidence(), testing::StartsWith("Name server 192.0.2.53 does not answer"));

    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 20};
    lookUp(0.2);
    run(3);
    EXPECT_EQ(evidence(), "Name server 192.0.2.54 refuses to answer.");
}

TEST_F(DiagnosticianNamesTest, WithoutAnAddressTheServersAreAskedForIPv4) {
    situation.address.reset();
    loseNameNow();
    run(1);

    ASSERT_EQ(names.asked.size(), 1U);
    EXPECT_EQ(names.asked[0].family, AF_INET);
}

TEST_F(DiagnosticianNamesTest, TheLastAddressIsProbedOnceASecondInThePingsPlace) {
    loseName();
    run(60);

    EXPECT_EQ(sentToTheLastAddress(), 60);
    EXPECT_LE(network.sent.size(), 121U); // with the hops, and one that was due already
}

TEST_F(DiagnosticianNamesTest, AllOfThatEndsAsSoonAsTheNameIsFound) {
    loseName();
    run(20);
    findName();
    run(1);
    names.asked.clear();
    network.sent.clear();

    run(30);
    EXPECT_EQ(sentToTheLastAddress(), 0); // only hops are probed for a while
    network.sent.clear();
    run(600);

    EXPECT_TRUE(names.asked.empty());
    EXPECT_TRUE(network.sent.empty());
    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianNamesTest, AnAnswerThatComesWhenTheNameIsFoundChangesNothing) {
    names.delay = 3;
    loseName();
    run(2);
    findName();
    lookUp(0.1);
    run(60);

    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianNamesTest, ALookupThatGoesOnCountsAsOneThatFailsAfterASecondAndAHalf) {
    run(60);
    isPinging = false;
    situation.lookup = Lookup{.begun = loop.now()};
    run(2);
    EXPECT_TRUE(names.asked.empty());
    run(5);

    EXPECT_FALSE(names.asked.empty());
    EXPECT_EQ(told(), "nameServer");
    EXPECT_EQ(likelihood(), Likelihood::certain);
}

TEST_F(DiagnosticianNamesTest, ALookupThatGoesOnWhileTheServersAreWellIsNoTroubleYet) {
    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 20};
    run(60);
    isPinging = false;
    situation.lookup = Lookup{.begun = loop.now()};
    run(8);

    EXPECT_FALSE(names.asked.empty());
    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianNamesTest, AServerThatMadeTheLookupLateIsAskedOnceAndNamedForHalfAMinute) {
    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 1600};
    lookUp(1.6);
    run(10);
    EXPECT_EQ(names.asked.size(), 1U);
    EXPECT_EQ(told(), "nameServer");
    EXPECT_EQ(likelihood(), Likelihood::likely);
    EXPECT_EQ(evidence(), "Name server 192.0.2.53 took 1600 ms to answer.");

    run(22);
    EXPECT_EQ(told(), "nothing");
    names.asked.clear();
    run(60);
    EXPECT_TRUE(names.asked.empty());
}

TEST_F(DiagnosticianNamesTest, ALateLookupIsForgivenWhereTheServersAreQuickNow) {
    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 20};
    lookUp(4);
    run(60);

    EXPECT_FALSE(names.asked.empty());
    EXPECT_EQ(told(), "nothing");
}

TEST_F(DiagnosticianNamesTest, ALookupInTimeIsNoReasonToAsk) {
    lookUp(1.4);
    run(60);

    EXPECT_TRUE(names.asked.empty());
}

TEST_F(DiagnosticianNamesTest, BadPingsAfterALateLookupAreJudgedByThePath) {
    names.servers[0] = {.address = "192.0.2.53", .answer = ServerSays::found, .ms = 1600};
    run(60);
    hostMs = 150;
    network.lateFrom = 4;
    network.extraMs = 140;
    lookUp(1.6);
    run(15);

    EXPECT_EQ(told(), "beyondProvider");
}

TEST_F(DiagnosticianNamesTest, TheAddressOfAnotherHostIsNotItsLastOne) {
    run(60);
    loseNameNow();
    situation.host = "two.example";
    situation.address.reset();
    run(5);

    EXPECT_TRUE(network.sent.empty());
    EXPECT_EQ(evidence(), "Name server 192.0.2.53 does not answer.");
    EXPECT_EQ(names.asked.back().host, "two.example");
}

TEST_F(DiagnosticianNamesTest, AnotherNetworksServersAreAskedAtOnce) {
    loseName();
    run(1);
    names.asked.clear();
    diagnostician.pathChanged();
    run(1);

    EXPECT_EQ(names.asked.size(), 1U);
}

TEST_F(DiagnosticianNamesTest, ASignInPageIsToldAsSoonAsThereIsTrouble) {
    service.connectivity = Connectivity::portal;
    run(60);
    EXPECT_TRUE(service.asked.empty());
    goDown(2);
    run(1);

    EXPECT_EQ(told(), "signIn");
}

TEST_F(DiagnosticianNamesTest, TheNetworkServiceIsAskedEveryTenSecondsWhileTroubleLasts) {
    run(60);
    goDown(2);
    run(36);
    EXPECT_EQ(service.asked.size(), 4U);
    for (std::size_t index = 1; index < service.asked.size(); ++index) {
        EXPECT_GE(service.asked[index] - service.asked[index - 1], 10);
    }

    network.silentFrom = 0;
    hostMs = 10;
    situation.trouble = Trouble::none;
    run(60);

    EXPECT_EQ(service.asked.size(), 4U);
}

TEST_F(DiagnosticianNamesTest, WhatTheServiceSaidOfEarlierTroubleDoesNotCount) {
    service.connectivity = Connectivity::portal;
    service.delay = 4;
    run(60);
    goDown(2);
    network.silentFrom = 0;
    hostMs = 10;
    situation.trouble = Trouble::none;
    run(1);
    service.connectivity = Connectivity::unknown;
    goDown(2);
    run(5); // so soon after the first outage the provider is only possible

    EXPECT_EQ(told(), "provider");
}

} // namespace
} // namespace tarnwick
