// Whose fault it is, for what name servers answer.
#include "tests/core/Diagnosis/DiagnosisTable.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using namespace test;
using Answer = NameServerEvidence::Answer;

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

class DiagnosesNames : public DiagnosisTable {};

TEST_P(DiagnosesNames, AsExpected) {
    EXPECT_EQ(told(GetParam().evidence), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    NameServers, DiagnosesNames,
    testing::Values(
        DiagnosisCase{
            "SilentWhileTheLastAddressAnswers", withoutName(Answer::none, true),
            "nameServer certain: Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last "
            "address, does."},
        DiagnosisCase{
            "SilentAsIsTheLastAddress", withoutName(Answer::none, false),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "SilentAndNoLastAddress", withoutName(Answer::none),
            "nameServer possible: Name server 192.0.2.53 does not answer."},
        DiagnosisCase{
            "Fails", withoutName(Answer::failed),
            "nameServer possible: Name server 192.0.2.53 fails to look up one.example."},
        DiagnosisCase{
            "FailsWhileTheLastAddressAnswers", withoutName(Answer::failed, true),
            "nameServer certain: Name server 192.0.2.53 fails to look up one.example."},
        DiagnosisCase{
            "FailsAndTheLastAddressIsSilent", withoutName(Answer::failed, false),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "SilentWhileTheLastAddressIsNotKnownToAnswer",
            with(withoutName(Answer::none), [](Evidence& it) { it.lastAddress = hostAddress; }),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "FoundOnlyNow", withoutName(Answer::found),
            "nameServer possible: Name server 192.0.2.53 has found one.example only now."},
        DiagnosisCase{
            "FoundLate", with(withoutName(Answer::found), [](Evidence& it) { it.nameServers[0].ms = 1500; }),
            "nameServer likely: Name server 192.0.2.53 took 1500 ms to answer."},
        DiagnosisCase{
            "OfTwoThatFindItTheSlowerOne",
            with(
                withoutName(Answer::found),
                [](Evidence& it) {
                    it.nameServers = {
                        {.address = "192.0.2.53", .answer = Answer::found, .ms = 2},
                        {.address = "192.0.2.54", .answer = Answer::found, .ms = 1600}};
                }),
            "nameServer likely: Name server 192.0.2.54 took 1600 ms to answer."},
        DiagnosisCase{
            "NoServerWasAskedAndTheLastAddressAnswers",
            with(withoutName(Answer::none, true), [](Evidence& it) { it.nameServers.clear(); }),
            "unclear possible: one.example can't be found; 203.0.113.9, its last address, answers."},
        DiagnosisCase{
            "NoServerWasAskedAndTheLastAddressIsSilent",
            with(withoutName(Answer::none, false), [](Evidence& it) { it.nameServers.clear(); }),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "NothingButALateLookup",
            with(
                quiet(),
                [](Evidence& it) {
                    it.trouble = Trouble::degraded;
                    it.isNameLate = true;
                    it.nameServers = {{.address = "192.0.2.53", .answer = Answer::found, .ms = 1500}};
                }),
            "nameServer likely: Name server 192.0.2.53 took 1500 ms to answer."},
        DiagnosisCase{
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
        DiagnosisCase{
            "Refuses", withoutName(Answer::refused),
            "nameServer possible: Name server 192.0.2.53 refuses to answer."},
        DiagnosisCase{
            "RefusesWhileTheLastAddressAnswers", withoutName(Answer::refused, true),
            "nameServer certain: Name server 192.0.2.53 refuses to answer."},
        DiagnosisCase{
            "RefusesAndTheLastAddressIsSilent", withoutName(Answer::refused, false),
            "unclear possible: What is wrong is not clear yet."},
        DiagnosisCase{
            "NoSuchNameAndTheLastAddressIsSilent", withoutName(Answer::noSuchName, false),
            "host possible: Name server 192.0.2.53 knows no one.example."},
        DiagnosisCase{
            "NoSuchName", withoutName(Answer::noSuchName),
            "host likely: Name server 192.0.2.53 knows no one.example."},
        DiagnosisCase{
            "NoSuchNameWhileTheLastAddressAnswers", withoutName(Answer::noSuchName, true),
            "nameServer likely: Name server 192.0.2.53 knows no one.example."},
        DiagnosisCase{
            "OneOfTwoIsSilent",
            with(
                withoutName(Answer::none, true),
                [](Evidence& it) {
                    it.nameServers.push_back({.address = "192.0.2.54", .answer = Answer::found});
                }),
            "nameServer certain: Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last "
            "address, does."},
        DiagnosisCase{
            "SilentBehindARouterThatIsAway",
            with(withoutName(Answer::none), [](Evidence& it) { it.neighbor = NeighborState::failed; }),
            "localNetwork certain: Your router (192.0.2.1) does not answer."},
        DiagnosisCase{
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

} // namespace
} // namespace tarnwick
