// Whose fault it is, for what the hops of the path answer.
#include "tests/core/Diagnosis/DiagnosisTable.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarnwick {
namespace {

using namespace test;

/// The host is in this machine's own network.
Evidence nextDoor(Evidence evidence) {
    return with(std::move(evidence), [](Evidence& it) {
        it.hops.erase(it.hops.begin(), it.hops.begin() + hostHop);
        it.router.reset();
        it.neighbor = NeighborState::unknown;
    });
}

class DiagnosesThePath : public DiagnosisTable {};

TEST_P(DiagnosesThePath, AsExpected) {
    EXPECT_EQ(told(GetParam().evidence), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    InTheOwnNetwork, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "SilentHost", nextDoor(downFrom(hostHop)),
            "host possible: 203.0.113.9, in your own network, does not answer."},
        DiagnosisCase{
            "LossyHost", nextDoor(lossyFrom(hostHop, 4)),
            "host possible: 203.0.113.9, in your own network, loses answers."},
        DiagnosisCase{
            "LateHost", nextDoor(lateFrom(hostHop, 200)),
            "host possible: 203.0.113.9, in your own network, answers late."},
        DiagnosisCase{
            "BehindWeakWifi", overWifi(nextDoor(downFrom(hostHop)), -82),
            "wifi possible: The Wi-Fi signal is weak (-82 dBm), and 203.0.113.9 does not answer."}),
    caseName);

/// The host is the router to the internet.
Evidence theRouter(const Evidence& evidence) {
    return with(nextDoor(evidence), [](Evidence& it) { it.router = hostAddress; });
}

INSTANTIATE_TEST_SUITE_P(
    TheOwnRouter, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "IsSilent", theRouter(downFrom(hostHop)),
            "localNetwork likely: Your router (203.0.113.9) does not answer."},
        DiagnosisCase{
            "LosesAnswers", theRouter(lossyFrom(hostHop, 4)),
            "localNetwork likely: Your router (203.0.113.9) loses answers."},
        DiagnosisCase{
            "IsLate", theRouter(lateFrom(hostHop, 200)),
            "localNetwork likely: Your router (203.0.113.9) answers late."},
        DiagnosisCase{
            "BehindWeakWifi", overWifi(theRouter(downFrom(hostHop)), -82),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router does not answer."},
        DiagnosisCase{
            "IsAnotherOne", with(theRouter(downFrom(hostHop)), [](Evidence& it) { it.router = router; }),
            "host possible: 203.0.113.9, in your own network, does not answer."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    OnThePath, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "NothingBeyondTheRouter", downFrom(firstProviderHop),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "ForMinutes", with(downFrom(firstProviderHop), [](Evidence& it) { it.silentSeconds = 179; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 2 min."},
        DiagnosisCase{
            "ForHours", with(downFrom(firstProviderHop), [](Evidence& it) { it.silentSeconds = 7300; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 2 h."},
        DiagnosisCase{
            "ARouterThatAnswersAtOnce",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) { it.hops[routerHop].samples = samples(3, 0, 0.3); }),
            "provider likely: Your router answers in under 1 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "InsideTheProvider", downFrom(lastProviderHop),
            "provider likely: The provider's network answers up to 198.51.100.1; nothing beyond it has "
            "answered for 14 "
            "s."},
        DiagnosisCase{
            "BeyondTheProvider", downFrom(hostsRouterHop),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "OnlyTheHost", downFrom(hostHop),
            "host likely: Everything up to the host's network answers; only the host does not."},
        DiagnosisCase{
            "LossFromTheRouterOn", lossyFrom(routerHop, 4),
            "localNetwork likely: Your router (192.0.2.1) loses answers."},
        DiagnosisCase{
            "LossBeyondTheRouter", lossyFrom(firstProviderHop, 5),
            "provider likely: Your router answers in 2 ms; beyond it 50% of the answers are lost."},
        DiagnosisCase{
            "LossBeyondTheProvider", lossyFrom(hostsRouterHop, 5),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "LossAtTheHost", lossyFrom(hostHop, 5),
            "host likely: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."},
        DiagnosisCase{
            "SilentBeforeItIsCalledDown",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.silentSeconds = 4;
                }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 4 s."},
        DiagnosisCase{
            "DelayBeyondTheRouter", lateFrom(firstProviderHop, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        DiagnosisCase{
            "DelayBeyondTheProvider", lateFrom(hostsRouterHop, 140),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; delay begins after "
            "it."},
        DiagnosisCase{
            "DelayAtTheHost", lateFrom(hostHop, 140),
            "host likely: Everything up to the host's network answers in time; only the host is 140 ms "
            "late."}),
    caseName);

/// Of ten pings five are lost, so many of them at the end.
Evidence turning(std::ptrdiff_t lostAtTheEnd) {
    return with(lossyFrom(hostsRouterHop, 5), [&](Evidence& it) {
        std::rotate(it.pings.begin(), it.pings.begin() + lostAtTheEnd, it.pings.end());
    });
}

INSTANTIATE_TEST_SUITE_P(
    WhileTheWayIsFailing, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "ThreeLost", turning(3),
            "beyondProvider possible: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "TwoLost", turning(2),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."}),
    caseName);

/// Half of the pings are lost, and none of so many probes of the routers.
Evidence luckyRouters(std::size_t probes) {
    return with(lossyFrom(hostHop, 5), [&](Evidence& it) {
        for (std::size_t hop = 0; hop < hostHop; ++hop) {
            it.hops[hop].samples = samples(probes, 0, *it.hops[hop].quietMs);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(
    AcquittedByLuck, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "AfterFourProbes", luckyRouters(4),
            "host possible: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."},
        DiagnosisCase{
            "AfterTenWhenThePingsWereFew",
            with(luckyRouters(10), [](Evidence& it) { it.pings = samples(5, 5, *it.quietMs); }),
            "host possible: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."},
        DiagnosisCase{
            "ByOneAnswerOfTheHopBefore", downFrom(hostsRouterHop, 1),
            "beyondProvider possible: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "NotByTwo", downFrom(hostsRouterHop, 2),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "NotByOneOfEachOfTheProvidersHopsBefore", downFrom(lastProviderHop, 1),
            "provider likely: The provider's network answers up to 198.51.100.1; nothing beyond it has "
            "answered for 14 "
            "s."},
        DiagnosisCase{
            "SilentAfterMuchLoss",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.lossBefore = 0.2; }),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "NotAfterTen", luckyRouters(10),
            "host likely: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."}),
    caseName);

/// Nothing beyond the first router answers. `quietMs`: the usual latency of the second one.
Evidence secondRouter(const std::string& address, double quietMs) {
    return with(downFrom(firstProviderHop), [&](Evidence& it) {
        it.hops[firstProviderHop].address = address;
        it.hops[firstProviderHop].quietMs = quietMs;
    });
}

INSTANTIATE_TEST_SUITE_P(
    NoProof, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "ARouterThatNeverAnswered",
            with(
                downFrom(hostHop),
                [](Evidence& it) { it.hops[lastProviderHop] = {.samples = samples(0, 3, 0)}; }),
            "host likely: Everything up to the host's network answers; only the host does not."},
        DiagnosisCase{
            "ARouterThatIsSilentNowButPassesOn",
            with(downFrom(hostHop), [](Evidence& it) { it.hops[routerHop].samples = samples(0, 3, 0); }),
            "host likely: Everything up to the host's network answers; only the host does not."},
        DiagnosisCase{
            "ALateRouterThatPassesOnInTime",
            with(
                lateFrom(hostHop, 140),
                [](Evidence& it) { it.hops[firstProviderHop].samples = samples(3, 0, 300); }),
            "host likely: Everything up to the host's network answers in time; only the host is 140 ms "
            "late."},
        DiagnosisCase{
            "NoProbesYet", downFrom(hostsRouterHop, 0), "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "OnlyTheRouterWasProbed",
            with(
                downFrom(hostsRouterHop, 0),
                [](Evidence& it) { it.hops[routerHop].samples = samples(1, 0, 2); }),
            "unclear possible: Your router is well; what is wrong beyond it is not clear."},
        DiagnosisCase{
            "SamplesThatContradictEachOther",
            with(
                downFrom(hostsRouterHop, 0),
                [](Evidence& it) {
                    it.hops[firstProviderHop].samples = samples(2, 0, 6);
                    it.hops[hostsRouterHop].samples = samples(1, 1, 14);
                }),
            "unclear possible: All is well up to 198.51.100.1; what is wrong beyond it is not clear."},
        DiagnosisCase{
            "NoRouterOfTheProviderEverAnswered",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) {
                    for (const std::size_t hop : {firstProviderHop, lastProviderHop, hostsRouterHop}) {
                        it.hops[hop] = {.samples = samples(0, 3, 0)};
                    }
                }),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "NoProvidersRouterEverAnsweredAndTheHostsDoes",
            with(
                lossyFrom(hostsRouterHop, 5),
                [](Evidence& it) {
                    for (const std::size_t hop : {firstProviderHop, lastProviderHop}) {
                        it.hops[hop] = {.samples = samples(0, 3, 0)};
                    }
                }),
            "provider possible: Your router answers in 2 ms; beyond it 50% of the answers are lost."},
        DiagnosisCase{
            "ASecondRouterThatMayBeTheUsersOwn",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) { it.hops[firstProviderHop].address = "192.168.178.1"; }),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "ASecondRouterWithAnInternalAddressThatAnswersAtOnce", secondRouter("10.0.0.1", 2.5),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "ASecondRouterWithAnInternalAddressThatIsNotNear", secondRouter("10.0.0.1", 6),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "ASecondRouterWithAnAddressOfProvidersUsers", secondRouter("100.64.0.1", 2.5),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        DiagnosisCase{
            "BeyondASecondRouterThatMayBeTheUsersOwn",
            with(
                downFrom(lastProviderHop),
                [](Evidence& it) { it.hops[firstProviderHop].address = "192.168.178.1"; }),
            "provider likely: The provider's network answers up to 192.168.178.1; nothing beyond it has "
            "answered for 14 s."},
        DiagnosisCase{
            "AWayThatMayBeAnotherOneByNow",
            with(downFrom(hostsRouterHop), [](Evidence& it) { it.hasPathChanged = true; }),
            "beyondProvider possible: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        DiagnosisCase{
            "NoPath", with(downFrom(0), [](Evidence& it) { it.hops.clear(); }),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "APathThatEndsBeforeTheHost",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.hops.resize(2); }),
            "unclear possible: Your router answers. What is wrong beyond it is not clear."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Words, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "ARouterSaysThatTheHostIsAway",
            with(
                downFrom(hostHop, 1),
                [](Evidence& it) { it.unreachable = {{.sender = hostsRouter, .count = 2}}; }),
            "host likely: Everything up to the host's network answers; 203.0.113.1 says that 203.0.113.9 "
            "can't be "
            "reached."},
        DiagnosisCase{
            "TheHomeRouterSaysThatThereIsNoWay",
            with(
                downFrom(firstProviderHop, 1),
                [](Evidence& it) { it.unreachable = {{.sender = router, .count = 2}}; }),
            "provider likely: Your router answers in 2 ms, and says that 203.0.113.9 can't be reached."},
        DiagnosisCase{
            "TheProvidersLastRouterSaysThatThereIsNoWay",
            with(
                downFrom(hostsRouterHop, 1),
                [](Evidence& it) { it.unreachable = {{.sender = lastOfProvider, .count = 2}}; }),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7, which says that "
            "203.0.113.9 can't be reached."},
        DiagnosisCase{
            "WhileAnswersComeThroughNoWordIsTold",
            with(
                lossyFrom(firstProviderHop, 4),
                [](Evidence& it) { it.unreachable = {{.sender = router, .count = 2}}; }),
            "provider likely: Your router answers in 2 ms; beyond it 40% of the answers are lost."},
        DiagnosisCase{
            "AStrangerSaysSo",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) { it.unreachable = {{.sender = "192.0.2.77", .count = 9}}; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

/// Nothing answers behind the router, which says that it forbids the way.
Evidence forbiddenBy(std::size_t hop) {
    return with(downFrom(hop + 1, 1), [&](Evidence& it) {
        it.unreachable = {{.sender = it.hops[hop].address, .count = 2, .word = RouterWord::forbidden}};
    });
}

INSTANTIATE_TEST_SUITE_P(
    Forbidden, DiagnosesThePath,
    testing::Values(
        DiagnosisCase{
            "ByTheHomeRouter", forbiddenBy(routerHop),
            "localNetwork likely: Your router (192.0.2.1) forbids the way to 203.0.113.9."},
        DiagnosisCase{
            "ByTheProvider", forbiddenBy(firstProviderHop),
            "provider likely: The provider's network answers up to 198.51.100.1, which forbids the way to "
            "203.0.113.9."},
        DiagnosisCase{
            "ByTheProvidersLastRouter", forbiddenBy(lastProviderHop),
            "provider likely: The provider's network answers up to 198.51.100.7, which forbids the way to "
            "203.0.113.9."},
        DiagnosisCase{
            "ByTheHostsRouter", forbiddenBy(hostsRouterHop),
            "host likely: Everything up to the host's network answers; 203.0.113.1 forbids the way to "
            "203.0.113.9."},
        DiagnosisCase{
            "ByASecondRouterThatMayBeTheUsersOwn",
            with(
                forbiddenBy(firstProviderHop),
                [](Evidence& it) {
                    it.hops[firstProviderHop].address = "192.168.178.1";
                    it.unreachable[0].sender = "192.168.178.1";
                }),
            "provider possible: The provider's network answers up to 192.168.178.1, which forbids the way to "
            "203.0.113.9."},
        DiagnosisCase{
            "ByTheHomeRouterWhileAnotherOneSaysThatThereIsNoWay",
            with(
                downFrom(firstProviderHop, 0),
                [](Evidence& it) {
                    it.hops[routerHop].samples = samples(3, 0, 2);
                    it.unreachable = {
                        {.sender = router, .count = 2, .word = RouterWord::forbidden},
                        {.sender = firstOfProvider, .count = 2}};
                }),
            "unclear possible: Your router is well; what is wrong beyond it is not clear."},
        DiagnosisCase{
            "ByAProvidersRouterOfWhichLittleIsHeard",
            with(
                forbiddenBy(firstProviderHop),
                [](Evidence& it) {
                    it.hops[firstProviderHop].samples.clear();
                    it.unreachable[0].count = 1;
                }),
            "provider possible: The provider's network answers up to 198.51.100.1, which forbids the way to "
            "203.0.113.9."},
        DiagnosisCase{
            "ByAHomeRouterOfWhichLittleIsHeard",
            with(
                forbiddenBy(routerHop),
                [](Evidence& it) {
                    it.hops[routerHop].samples.clear();
                    it.unreachable[0].count = 1;
                }),
            "localNetwork possible: Your router (192.0.2.1) forbids the way to 203.0.113.9."}),
    caseName);

} // namespace
} // namespace tarnwick
