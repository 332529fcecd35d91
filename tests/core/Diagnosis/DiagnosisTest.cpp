// Whose fault it is, for what this computer, its network and its load show.
#include "tests/core/Diagnosis/DiagnosisTable.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using namespace test;
using Kind = LinkEvidence::Kind;

Evidence loaded(double sentMbit, double receivedMbit, double seconds, double extraMs) {
    return with(lateFrom(firstProviderHop, extraMs), [&](Evidence& it) {
        it.load = {.sentMbit = sentMbit, .receivedMbit = receivedMbit, .seconds = seconds};
    });
}

Evidence atRate(Evidence evidence, double mbit) {
    return with(std::move(evidence), [&](Evidence& it) { it.link->rateMbit = mbit; });
}

/// Nothing comes back to that address of this computer's.
Evidence sentFrom(const std::string& source) {
    return with(downFrom(routerHop), [&](Evidence& it) { it.link->source = source; });
}

class Diagnoses : public DiagnosisTable {};

TEST_P(Diagnoses, AsExpected) {
    EXPECT_EQ(told(GetParam().evidence), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    ThisComputer, Diagnoses,
    testing::Values(
        DiagnosisCase{"AllIsWell", quiet(), "nothing"},
        DiagnosisCase{
            "NoInterface", with(downFrom(0), [](Evidence& it) { it.link = LinkEvidence{}; }),
            "thisComputer certain: No network: this computer has no connection."},
        DiagnosisCase{
            "WifiIsOff",
            with(
                downFrom(0),
                [](Evidence& it) {
                    it.link = LinkEvidence{.interface = "wlan0", .kind = Kind::wifi, .isUp = false};
                }),
            "thisComputer certain: No network: Wi-Fi is off."},
        DiagnosisCase{
            "WifiIsNotConnected",
            with(
                downFrom(0),
                [](Evidence& it) {
                    it.link = LinkEvidence{.interface = "wlan0", .kind = Kind::wifi, .hasCarrier = false};
                }),
            "thisComputer certain: No network: Wi-Fi is not connected."},
        DiagnosisCase{
            "NoCable", with(downFrom(0), [](Evidence& it) { it.link->hasCarrier = false; }),
            "thisComputer certain: No network: eth0 has no cable."},
        DiagnosisCase{
            "InterfaceIsOff", with(downFrom(0), [](Evidence& it) { it.link->isUp = false; }),
            "thisComputer certain: No network: eth0 is off."},
        DiagnosisCase{
            "NoAddress", with(downFrom(0), [](Evidence& it) { it.link->hasAddress = false; }),
            "thisComputer certain: No address from the network."},
        DiagnosisCase{
            "OnlyASelfAssignedAddressOfTheHostsFamily", sentFrom("169.254.7.7"),
            "thisComputer certain: No IPv4 address from the network."},
        DiagnosisCase{
            "OnlyASelfAssignedIPv6Address",
            with(sentFrom("fe80::7%eth0"), [](Evidence& it) { it.address = "2001:db8::9"; }),
            "thisComputer certain: No IPv6 address from the network."},
        DiagnosisCase{
            "AnAddressFromTheNetwork", sentFrom("192.0.2.10"),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "ASelfAssignedAddressTowardsAnother",
            with(sentFrom("169.254.7.7"), [](Evidence& it) { it.address = "169.254.7.9"; }),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "ASelfAssignedAddressInATunnel",
            with(sentFrom("169.254.7.7"), [](Evidence& it) { it.link->kind = Kind::tunnel; }),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "ASelfAssignedAddressOnALinkOfAnotherKind",
            with(sentFrom("169.254.7.7"), [](Evidence& it) { it.link->kind = Kind::other; }),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "ASelfAssignedAddressThatIsAnswered",
            with(lossyFrom(routerHop, 4), [](Evidence& it) { it.link->source = "169.254.7.7"; }),
            "localNetwork likely: Your router (192.0.2.1) loses answers."},
        DiagnosisCase{
            "NoRoute", with(downFrom(0), [](Evidence& it) { it.link->hasRoute = false; }),
            "thisComputer certain: No way to the internet: no router is set."},
        DiagnosisCase{
            "TheSystemRefuses",
            with(downFrom(0), [](Evidence& it) { it.socketError = "Operation not permitted"; }),
            "thisComputer certain: This computer can't send: Operation not permitted."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    Local, Diagnoses,
    testing::Values(
        DiagnosisCase{
            "SilentRouter", downFrom(routerHop),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "FailedNeighbor",
            with(downFrom(routerHop), [](Evidence& it) { it.neighbor = NeighborState::failed; }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "FailedNeighborWithoutAPath",
            with(
                downFrom(routerHop),
                [](Evidence& it) {
                    it.neighbor = NeighborState::failed;
                    it.hops.clear();
                }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "WeakSignalAndNoRouter", overWifi(downFrom(routerHop), -82),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router does not answer."},
        DiagnosisCase{
            "WeakSignalAndLateRouter", overWifi(lateFrom(routerHop, 100), -82),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router answers late."},
        DiagnosisCase{
            "WeakSignalAndLoss", overWifi(lossyFrom(routerHop, 4), -75),
            "wifi likely: The Wi-Fi signal is weak (-75 dBm), and the router loses answers."},
        DiagnosisCase{
            "WeakSignalAndALowRate", atRate(overWifi(lateFrom(routerHop, 100), -82), 6),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm, 6 Mbit/s), and the router answers late."},
        DiagnosisCase{
            "WeakSignalAndARateThatIsNotLow", atRate(overWifi(lateFrom(routerHop, 100), -82), 10),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router answers late."},
        DiagnosisCase{
            "ALowRateFromBeforeTheSilence", atRate(overWifi(downFrom(routerHop), -82), 6),
            "wifi likely: The Wi-Fi signal is weak (-82 dBm), and the router does not answer."},
        DiagnosisCase{
            "ALowRateAloneBlamesNoWifi", atRate(overWifi(lossyFrom(routerHop, 4), -60), 5.5),
            "localNetwork likely: Your router (192.0.2.1) loses answers, over Wi-Fi at 6 Mbit/s."},
        DiagnosisCase{
            "ALowRateOfAnUnknownSignal",
            with(
                atRate(overWifi(lateFrom(routerHop, 100), 0), 1),
                [](Evidence& it) { it.link->signalDbm.reset(); }),
            "localNetwork likely: Your router (192.0.2.1) answers late, over Wi-Fi at 1 Mbit/s."},
        DiagnosisCase{
            "ALowRateOfAnotherKindOfLink", atRate(lateFrom(routerHop, 100), 1),
            "localNetwork likely: Your router (192.0.2.1) answers late."},
        DiagnosisCase{
            "GoodSignalAndNoRouter", overWifi(downFrom(routerHop), -60),
            "localNetwork likely: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
            "WeakSignalButTheProviderFails", overWifi(downFrom(firstProviderHop), -82),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

INSTANTIATE_TEST_SUITE_P(
    SignInAndLoad, Diagnoses,
    testing::Values(
        DiagnosisCase{
            "SignIn",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.connectivity = Connectivity::portal; }),
            "signIn certain: The network wants you to sign in."},
        DiagnosisCase{
            "Upload", loaded(9.2, 0.4, 5, 140),
            "ownLoad possible: Latency rises from 18 to 158 ms while this computer uploads 9 Mbit/s."},
        DiagnosisCase{
            "Download", loaded(0.4, 45, 5, 140),
            "ownLoad possible: Latency rises from 18 to 158 ms while this computer downloads 45 Mbit/s."},
        DiagnosisCase{
            "LoadWhereTheRouterIsLateAsWell",
            with(lateFrom(routerHop, 140), [](Evidence& it) { it.load = {.sentMbit = 9, .seconds = 9}; }),
            "ownLoad possible: Latency rises from 18 to 158 ms while this computer uploads 9 Mbit/s."},
        DiagnosisCase{
            "LoadBesideADelayFartherOut",
            with(
                lateFrom(hostsRouterHop, 140), [](Evidence& it) { it.load = {.sentMbit = 9, .seconds = 9}; }),
            "beyondProvider likely: The provider's network answers up to 198.51.100.7; delay begins after "
            "it."},
        DiagnosisCase{
            "LoadWithoutAPath", with(loaded(9, 0, 5, 140), [](Evidence& it) { it.hops.clear(); }),
            "ownLoad possible: Latency rises from 18 to 158 ms while this computer uploads 9 Mbit/s."},
        DiagnosisCase{
            "LoadThatHasJustBegun", loaded(9, 0, 1.9, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        DiagnosisCase{
            "TooLittleLoad", loaded(0.9, 0, 5, 140),
            "provider likely: Your router answers in 2 ms; beyond it answers come 140 ms late."},
        DiagnosisCase{
            "LoadIsNeverDown",
            with(downFrom(firstProviderHop), [](Evidence& it) { it.load = {.sentMbit = 9, .seconds = 9}; }),
            "provider likely: Your router answers in 2 ms; nothing beyond it has answered for 14 s."}),
    caseName);

} // namespace
} // namespace tarnwick
