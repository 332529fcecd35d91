// Whose fault it is, for evidence of each kind.
#include "core/Diagnosis/Diagnosis.h"

#include "tests/core/Diagnosis/SomeEvidence.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarnwick {
namespace {

using namespace test;
using Kind = LinkEvidence::Kind;
using Answer = NameServerEvidence::Answer;

/// As one line: "provider likely: Your router ...".
std::string told(const Evidence& evidence) {
    const auto verdict = diagnose(evidence);
    if (!verdict) {
        return "nothing";
    }
    return std::string(nameOf(verdict->blame)) + " " + std::string(nameOf(verdict->likelihood)) + ": "
           + verdict->evidence;
}

/// `evidence` with something changed.
template<class Change>
Evidence with(Evidence evidence, Change change) {
    change(evidence);
    return evidence;
}

Evidence withoutName(Answer answer, std::optional<bool> lastAddressAnswers = std::nullopt) {
    return with(quiet(), [&](Evidence& it) {
        it.trouble = Trouble::down;
        it.isNameMissing = true;
        it.address.reset();
        it.hops.clear();
        it.pings.clear();
        it.nameServers = {{.address = "192.0.2.53", .answer = answer}};
        if (lastAddressAnswers) {
            it.lastAddress = hostAddress;
            it.lastAddressAnswers = lastAddressAnswers;
        }
    });
}

Evidence overWifi(Evidence evidence, int signalDbm) {
    return with(std::move(evidence), [&](Evidence& it) {
        it.link->kind = Kind::wifi;
        it.link->signalDbm = signalDbm;
    });
}

/// The host is in this machine's own network.
Evidence nextDoor(Evidence evidence) {
    return with(std::move(evidence), [](Evidence& it) {
        it.hops.erase(it.hops.begin(), it.hops.begin() + hostHop);
        it.router.reset();
        it.neighbor = NeighborState::unknown;
    });
}

Evidence loaded(double sentMbit, double receivedMbit, double seconds, double extraMs) {
    return with(lateFrom(firstProviderHop, extraMs), [&](Evidence& it) {
        it.load = {.sentMbit = sentMbit, .receivedMbit = receivedMbit, .seconds = seconds};
    });
}

struct Case {
    std::string name;
    Evidence evidence;
    std::string told;
};

class Diagnoses : public testing::TestWithParam<Case> {};

TEST_P(Diagnoses, AsExpected) {
    EXPECT_EQ(told(GetParam().evidence), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    ThisComputer, Diagnoses,
    testing::Values(
        Case{"AllIsWell", quiet(), "nothing"},
        Case{
            "NoInterface", with(downFrom(0), [](Evidence& it) { it.link = LinkEvidence{}; }),
            "thisComputer certain: No network: this computer has no connection."},
        Case{
            "WifiIsOff",
            with(
                downFrom(0),
                [](Evidence& it) {
                    it.link = LinkEvidence{.interface = "wlan0", .kind = Kind::wifi, .isUp = false};
                }),
            "thisComputer certain: No network: Wi-Fi is off."},
        Case{
            "WifiIsNotConnected",
            with(
                downFrom(0),
                [](Evidence& it) {
                    it.link = LinkEvidence{.interface = "wlan0", .kind = Kind::wifi, .hasCarrier = false};
                }),
            "thisComputer certain: No network: Wi-Fi is not connected."},
        Case{
            "NoCable", with(downFrom(0), [](Evidence& it) { it.link->hasCarrier = false; }),
            "thisComputer certain: No network: eth0 has no cable."},
        Case{
            "InterfaceIsOff", with(downFrom(0), [](Evidence& it) { it.link->isUp = false; }),
            "thisComputer certain: No network: eth0 is off."},
        Case{
            "NoAddress", with(downFrom(0), [](Evidence& it) { it.link->hasAddress = false; }),
            "thisComputer certain: No address from the network."},
        Case{
            "NoRoute", with(downFrom(0), [](Evidence& it) { it.link->hasRoute = false; }),
            "thisComputer certain: No way to the internet: no router is set."},
        Case{
            "TheSystemRefuses",
            with(downFrom(0), [](Evidence& it) { it.socketError = "Operation not permitted"; }),
            "thisComputer certain: This computer can't send: Operation not permitted."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Local, Diagnoses,
    testing::Values(
        Case{
            "SilentRouter", downFrom(routerHop),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        Case{
            "FailedNeighbor",
            with(downFrom(routerHop), [](Evidence& it) { it.neighbor = NeighborState::failed; }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        Case{
            "FailedNeighborWithoutAPath",
            with(
                downFrom(routerHop),
                [](Evidence& it) {
                    it.neighbor = NeighborState::failed;
                    it.hops.clear();
                }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        Case{
            "WeakSignalAndNoRouter", overWifi(downFrom(routerHop), -82),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router does not answer."},
        Case{
            "WeakSignalAndLateRouter", overWifi(lateFrom(routerHop, 100), -82),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router answers late."},
        Case{
            "WeakSignalAndLoss", overWifi(lossyFrom(routerHop, 4), -75),
            "wifi likely: The Wi-Fi signal is weak (-75 dBm), and the router loses answers."},
        Case{
            "GoodSignalAndNoRouter", overWifi(downFrom(routerHop), -60),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        Case{
            "WeakSignalButTheProviderFails", overWifi(downFrom(firstProviderHop), -82),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    InTheOwnNetwork, Diagnoses,
    testing::Values(
        Case{
            "SilentHost", nextDoor(downFrom(hostHop)),
            "host possible: 203.0.113.9, in your own network, does not answer."},
        Case{
            "LossyHost", nextDoor(lossyFrom(hostHop, 4)),
            "host possible: 203.0.113.9, in your own network, loses answers."},
        Case{
            "LateHost", nextDoor(lateFrom(hostHop, 200)),
            "host possible: 203.0.113.9, in your own network, answers late."},
        Case{
            "BehindWeakWifi", overWifi(nextDoor(downFrom(hostHop)), -82),
            "wifi possible: The Wi-Fi signal is weak (-82 dBm), and 203.0.113.9 does not answer."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    OnThePath, Diagnoses,
    testing::Values(
        Case{
            "NothingBeyondTheRouter", downFrom(firstProviderHop),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        Case{
            "ForMinutes", with(downFrom(firstProviderHop), [](Evidence& it) { it.silentSeconds = 179; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 2 min."},
        Case{
            "ForHours", with(downFrom(firstProviderHop), [](Evidence& it) { it.silentSeconds = 7300; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 2 h."},
        Case{
            "ARouterThatAnswersAtOnce",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) { it.hops[routerHop].samples = samples(3, 0, 0.3); }),
            "provider likely: Your router answers in under 1 ms; nothing beyond it has answered for 14 s."},
        Case{
            "InsideTheProvider", downFrom(lastProviderHop),
            "provider likely: The provider's network answers up to 198.51.100.1; nothing beyond it has "
            "answered for 14 "
            "s."},
        Case{
            "BeyondTheProvider", downFrom(hostsRouterHop),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        Case{
            "OnlyTheHost", downFrom(hostHop),
            "host likely: Everything up to the host's network answers; only the host does not."},
        Case{
            "LossFromTheRouterOn", lossyFrom(routerHop, 4),
            "localNetwork likely: Your router (192.0.2.1) loses answers."},
        Case{
            "LossBeyondTheRouter", lossyFrom(firstProviderHop, 4),
            "provider likely: Your router answers in 2 ms; beyond it 40% of the answers are lost."},
        Case{
            "LossBeyondTheProvider", lossyFrom(hostsRouterHop, 5),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        Case{
            "LossAtTheHost", lossyFrom(hostHop, 4),
            "host likely: Everything up to the host's network answers; only the host loses 40% of the "
            "answers."},
        Case{
            "SilentBeforeItIsCalledDown",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.silentSeconds = 4;
                }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 4 s."},
        Case{
            "DelayBeyondTheRouter", lateFrom(firstProviderHop, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        Case{
            "DelayBeyondTheProvider", lateFrom(hostsRouterHop, 140),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; delay begins after "
            "it."},
        Case{
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
    WhileTheWayIsFailing, Diagnoses,
    testing::Values(
        Case{
            "ThreeLost", turning(3),
            "beyondProvider possible: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        Case{
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
    AcquittedByLuck, Diagnoses,
    testing::Values(
        Case{
            "AfterFourProbes", luckyRouters(4),
            "host possible: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."},
        Case{
            "ByOneAnswerOfTheHopBefore", downFrom(hostsRouterHop, 1),
            "beyondProvider possible: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        Case{
            "NotByTwo", downFrom(hostsRouterHop, 2),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; loss begins after "
            "it."},
        Case{
            "NotByOneOfEachOfTheProvidersHopsBefore", downFrom(lastProviderHop, 1),
            "provider likely: The provider's network answers up to 198.51.100.1; nothing beyond it has "
            "answered for 14 "
            "s."},
        Case{
            "SilentAfterMuchLoss",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.lossBefore = 0.2; }),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        Case{
            "NotAfterSeven", luckyRouters(7),
            "host likely: Everything up to the host's network answers; only the host loses 50% of the "
            "answers."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    NoProof, Diagnoses,
    testing::Values(
        Case{
            "ARouterThatNeverAnswered",
            with(
                downFrom(hostHop),
                [](Evidence& it) { it.hops[lastProviderHop] = {.samples = samples(0, 3, 0)}; }),
            "host likely: Everything up to the host's network answers; only the host does not."},
        Case{
            "ARouterThatIsSilentNowButPassesOn",
            with(downFrom(hostHop), [](Evidence& it) { it.hops[routerHop].samples = samples(0, 3, 0); }),
            "host likely: Everything up to the host's network answers; only the host does not."},
        Case{
            "ALateRouterThatPassesOnInTime",
            with(
                lateFrom(hostHop, 140),
                [](Evidence& it) { it.hops[firstProviderHop].samples = samples(3, 0, 300); }),
            "host likely: Everything up to the host's network answers in time; only the host is 140 ms "
            "late."},
        Case{"NoProbesYet", downFrom(hostsRouterHop, 0), "unclear possible: What is wrong is not clear yet."},
        Case{
            "OnlyTheRouterWasProbed",
            with(
                downFrom(hostsRouterHop, 0),
                [](Evidence& it) { it.hops[routerHop].samples = samples(1, 0, 2); }),
            "unclear possible: Your router is well; what is wrong beyond it is not clear."},
        Case{
            "SamplesThatContradictEachOther",
            with(
                downFrom(hostsRouterHop, 0),
                [](Evidence& it) {
                    it.hops[firstProviderHop].samples = samples(2, 0, 6);
                    it.hops[hostsRouterHop].samples = samples(1, 1, 14);
                }),
            "unclear possible: All is well up to 198.51.100.1; what is wrong beyond it is not clear."},
        Case{
            "NoRouterOfTheProviderEverAnswered",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) {
                    for (const std::size_t hop : {firstProviderHop, lastProviderHop, hostsRouterHop}) {
                        it.hops[hop] = {.samples = samples(0, 3, 0)};
                    }
                }),
            "provider possible: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        Case{
            "NoProvidersRouterEverAnsweredAndTheHostsDoes",
            with(
                lossyFrom(hostsRouterHop, 5),
                [](Evidence& it) {
                    for (const std::size_t hop : {firstProviderHop, lastProviderHop}) {
                        it.hops[hop] = {.samples = samples(0, 3, 0)};
                    }
                }),
            "provider possible: Your router answers in 2 ms; beyond it 50% of the answers are lost."},
        Case{
            "NoPath", with(downFrom(0), [](Evidence& it) { it.hops.clear(); }),
            "unclear possible: What is wrong is not clear yet."},
        Case{
            "APathThatEndsBeforeTheHost",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.hops.resize(2); }),
            "unclear possible: Your router answers. What is wrong beyond it is not clear."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Words, Diagnoses,
    testing::Values(
        Case{
            "ARouterSaysThatTheHostIsAway",
            with(
                downFrom(hostHop, 1),
                [](Evidence& it) { it.unreachable = {{.sender = hostsRouter, .count = 2}}; }),
            "host likely: Everything up to the host's network answers; only the host does not."},
        Case{
            "TheHomeRouterSaysThatThereIsNoWay",
            with(
                downFrom(firstProviderHop, 1),
                [](Evidence& it) { it.unreachable = {{.sender = router, .count = 2}}; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        Case{
            "AStrangerSaysSo",
            with(
                downFrom(firstProviderHop),
                [](Evidence& it) { it.unreachable = {{.sender = "192.0.2.77", .count = 9}}; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    NameServers, Diagnoses,
    testing::Values(
        Case{
            "SilentWhileTheLastAddressAnswers", withoutName(Answer::none, true),
            "nameServer certain: Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last "
            "address, does."},
        Case{
            "SilentAsIsTheLastAddress", withoutName(Answer::none, false),
            "unclear possible: What is wrong is not clear yet."},
        Case{
            "SilentAndNoLastAddress", withoutName(Answer::none),
            "nameServer possible: Name server 192.0.2.53 does not answer."},
        Case{
            "Fails", withoutName(Answer::failed),
            "nameServer possible: Name server 192.0.2.53 fails to look up one.example."},
        Case{
            "FailsWhileTheLastAddressAnswers", withoutName(Answer::failed, true),
            "nameServer certain: Name server 192.0.2.53 fails to look up one.example."},
        Case{
            "FailsAndTheLastAddressIsSilent", withoutName(Answer::failed, false),
            "unclear possible: What is wrong is not clear yet."},
        Case{
            "SilentWhileTheLastAddressIsNotKnownToAnswer",
            with(withoutName(Answer::none), [](Evidence& it) { it.lastAddress = hostAddress; }),
            "unclear possible: What is wrong is not clear yet."},
        Case{
            "FoundOnlyNow", withoutName(Answer::found),
            "nameServer possible: Name server 192.0.2.53 has found one.example only now."},
        Case{
            "FoundLate", with(withoutName(Answer::found), [](Evidence& it) { it.nameServers[0].ms = 1500; }),
            "nameServer likely: Name server 192.0.2.53 took 1500 ms to answer."},
        Case{
            "OfTwoThatFindItTheSlowerOne",
            with(
                withoutName(Answer::found),
                [](Evidence& it) {
                    it.nameServers = {
                        {.address = "192.0.2.53", .answer = Answer::found, .ms = 2},
                        {.address = "192.0.2.54", .answer = Answer::found, .ms = 1600}};
                }),
            "nameServer likely: Name server 192.0.2.54 took 1600 ms to answer."},
        Case{
            "NoServerWasAskedAndTheLastAddressAnswers",
            with(withoutName(Answer::none, true), [](Evidence& it) { it.nameServers.clear(); }),
            "unclear possible: one.example can't be found; 203.0.113.9, its last address, answers."},
        Case{
            "NoServerWasAskedAndTheLastAddressIsSilent",
            with(withoutName(Answer::none, false), [](Evidence& it) { it.nameServers.clear(); }),
            "unclear possible: What is wrong is not clear yet."},
        Case{
            "NothingButALateLookup",
            with(
                quiet(),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.isNameLate = true;
                    it.nameServers = {{.address = "192.0.2.53", .answer = Answer::found, .ms = 1500}};
                }),
            "nameServer likely: Name server 192.0.2.53 took 1500 ms to answer."},
        Case{
            "NothingButALateLookupPastASilentServer",
            with(
                quiet(),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.isNameLate = true;
                    it.nameServers = {
                        {.address = "192.0.2.53", .answer = Answer::none},
                        {.address = "192.0.2.54", .answer = Answer::found, .ms = 2}};
                }),
            "nameServer likely: Name server 192.0.2.53 does not answer."},
        Case{
            "Refuses", withoutName(Answer::refused),
            "nameServer likely: Name server 192.0.2.53 refuses to answer."},
        Case{
            "RefusesWhileTheLastAddressAnswers", withoutName(Answer::refused, true),
            "nameServer certain: Name server 192.0.2.53 refuses to answer."},
        Case{
            "NoSuchName", withoutName(Answer::noSuchName),
            "host likely: Name server 192.0.2.53 knows no one.example."},
        Case{
            "NoSuchNameWhileTheLastAddressAnswers", withoutName(Answer::noSuchName, true),
            "nameServer likely: Name server 192.0.2.53 knows no one.example."},
        Case{
            "OneOfTwoIsSilent",
            with(
                withoutName(Answer::none, true),
                [](Evidence& it) {
                    it.nameServers.push_back({.address = "192.0.2.54", .answer = Answer::found});
                }),
            "nameServer certain: Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last "
            "address, does."},
        Case{
            "SilentBehindARouterThatIsAway",
            with(withoutName(Answer::none), [](Evidence& it) { it.neighbor = NeighborState::failed; }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        Case{
            "Late",
            with(
                quiet(),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.hops.clear();
                    it.nameServers = {{.address = "192.0.2.53", .answer = Answer::found, .ms = 4200}};
                }),
            "nameServer possible: Name server 192.0.2.53 took 4200 ms to answer."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    SignInAndLoad, Diagnoses,
    testing::Values(
        Case{
            "SignIn",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.connectivity = Connectivity::portal; }),
            "signIn certain: The network wants you to sign in."},
        Case{
            "Upload", loaded(9.2, 0.4, 5, 140),
            "ownLoad likely: Latency rises from 18 to 158 ms while this computer uploads 9 Mbit/s."},
        Case{
            "Download", loaded(0.4, 45, 5, 140),
            "ownLoad likely: Latency rises from 18 to 158 ms while this computer downloads 45 Mbit/s."},
        Case{
            "LoadThatHasJustBegun", loaded(9, 0, 1.9, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        Case{
            "TooLittleLoad", loaded(0.9, 0, 5, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        Case{
            "LoadIsNeverDown",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.load = {.sentMbit = 9, .seconds = 9}; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

} // namespace
} // namespace tarnwick
