#include "core/Diagnosis/NameVerdict.h"

#include "core/Text.h"

#include <algorithm>
#include <string>

namespace tarnwick {

namespace {

using ServerAnswer = NameServerEvidence::Answer;

bool isLate(const NameServerEvidence& server) {
    return server.ms && *server.ms >= lateLookupMs;
}

/// The server that answered worst, of those that were asked; of two alike, the one that took longer.
const NameServerEvidence* worstServer(const Evidence& evidence) {
    const auto isWorse = [](const NameServerEvidence& one, const NameServerEvidence& other) {
        return one.answer != other.answer ? one.answer < other.answer
                                          : one.ms.value_or(0) > other.ms.value_or(0);
    };
    const auto worst = std::ranges::min_element(evidence.nameServers, isWorse);
    return worst == evidence.nameServers.end() ? nullptr : &*worst;
}

/// Of one that is no good.
std::string complaint(const NameServerEvidence& server, const std::string& host) {
    const std::string who = "Name server " + server.address;
    switch (server.answer) {
    case ServerAnswer::none:
        return who + " does not answer.";
    case ServerAnswer::failed:
        return who + " fails to look up " + host + ".";
    case ServerAnswer::refused:
        return who + " refuses to answer.";
    case ServerAnswer::noSuchName:
        return who + " knows no " + host + ".";
    case ServerAnswer::found:
        break;
    }
    return isLate(server) ? who + " took " + Text::whole(server.ms.value_or(0)) + " ms to answer."
                          : who + " has found " + host + " only now.";
}

/// What is left to say where no server was asked.
std::optional<Verdict> nameWithoutServer(const Evidence& evidence, bool lastAnswers) {
    if (!lastAnswers) {
        return std::nullopt;
    }
    return Verdict{
        .evidence = evidence.host + " can't be found; " + evidence.lastAddress.value_or("")
                    + ", its last address, answers."};
}

/// `lastAnswers`: the host's last address; nothing where none is known.
Likelihood likelihoodOf(const NameServerEvidence& server, std::optional<bool> lastAnswers) {
    switch (server.answer) {
    case ServerAnswer::none:
    case ServerAnswer::failed:
    case ServerAnswer::refused:
        return lastAnswers == true ? Likelihood::certain : Likelihood::possible;
    case ServerAnswer::noSuchName:
        // A router at home may say so for want of its own way out.
        return lastAnswers == false ? Likelihood::possible : Likelihood::likely;
    case ServerAnswer::found:
        break;
    }
    return isLate(server) ? Likelihood::likely : Likelihood::possible;
}

} // namespace

bool isReason(const NameServerEvidence& server) {
    return server.answer <= ServerAnswer::refused || isLate(server);
}

std::optional<Verdict> missingNameVerdict(const Evidence& evidence) {
    const bool isLastOpen = evidence.lastAddress && !evidence.lastAddressAnswers;
    if (!evidence.isNameMissing || isLastOpen) {
        return std::nullopt;
    }
    const bool lastAnswers = evidence.lastAddressAnswers.value_or(false);
    const NameServerEvidence* const server = worstServer(evidence);
    if (server == nullptr) {
        return nameWithoutServer(evidence, lastAnswers);
    }
    const bool isWayBad = evidence.lastAddressAnswers == false;
    if (server->answer <= ServerAnswer::refused && isWayBad) {
        return std::nullopt;
    }
    const bool isHostGone = server->answer == ServerAnswer::noSuchName && !lastAnswers;
    const bool isContrast = server->answer == ServerAnswer::none && lastAnswers;
    return Verdict{
        .blame = isHostGone ? Blame::host : Blame::nameServer,
        .likelihood = likelihoodOf(*server, evidence.lastAddressAnswers),
        .evidence = isContrast ? "Name server " + server->address + " does not answer; "
                                     + evidence.lastAddress.value_or("") + ", the host's last address, does."
                               : complaint(*server, evidence.host)};
}

std::optional<Verdict> lateNameVerdict(const Evidence& evidence) {
    const NameServerEvidence* const server = worstServer(evidence);
    if (!evidence.isNameLate || server == nullptr || !isReason(*server)) {
        return std::nullopt;
    }
    return Verdict{
        .blame = Blame::nameServer,
        .likelihood = Likelihood::likely,
        .evidence = complaint(*server, evidence.host)};
}

std::optional<Verdict> slowServerVerdict(const Evidence& evidence) {
    const auto slow = std::ranges::find_if(evidence.nameServers, isLate);
    if (slow == evidence.nameServers.end()) {
        return std::nullopt;
    }
    return Verdict{
        .blame = Blame::nameServer,
        .likelihood = Likelihood::possible,
        .evidence = complaint({.address = slow->address, .answer = ServerAnswer::found, .ms = slow->ms}, "")};
}

} // namespace tarnwick
