#include "core/Diagnosis/PathSentences.h"

#include "core/Diagnosis/FaultPlace.h"
#include "core/Diagnosis/HopSamples.h"
#include "core/Diagnosis/ProviderNetwork.h"
#include "core/Diagnosis/RouterWords.h"
#include "core/Diagnosis/Symptom.h"
#include "core/Diagnosis/Verdict.h"
#include "core/Text.h"

#include <cmath>
#include <optional>
#include <string_view>

namespace tarnwick {

namespace {

/// "14 s", "3 min", "2 h": after a minute the sentence changes once a minute, then once an hour.
std::string durationText(double seconds) {
    constexpr double minute = 60;
    constexpr double hour = 3600;
    if (seconds < minute) {
        return Text::whole(seconds) + " s";
    }
    return seconds < hour ? Text::whole(std::floor(seconds / minute)) + " min"
                          : Text::whole(std::floor(seconds / hour)) + " h";
}

/// "nothing beyond it has answered for 14 s.", "beyond it 20% of the answers are lost." or "beyond it answers
/// come 140 ms late."
std::string happens(const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        break;
    case Symptom::loses:
        return "beyond it " + Text::whole(100 * lostShare(evidence.pings).value_or(0))
               + "% of the answers are lost.";
    case Symptom::late:
        return "beyond it answers come " + Text::whole(extraDelay(evidence)) + " ms late.";
    }
    return "nothing beyond it has answered for " + durationText(evidence.silentSeconds) + ".";
}

std::string_view nameOfSymptom(const Evidence& evidence) {
    return symptomOf(evidence) == Symptom::late ? "delay" : "loss";
}

std::string pingedAddress(const Evidence& evidence) {
    return evidence.address.value_or(evidence.host);
}

/// What a router says of the host: "forbids the way to 203.0.113.9."
std::string saying(const UnreachableEvidence& word, const Evidence& evidence) {
    return word.word == RouterWord::forbidden ? "forbids the way to " + pingedAddress(evidence) + "."
                                              : "says that " + pingedAddress(evidence) + " can't be reached.";
}

std::string routerSentence(const Evidence& evidence) {
    const std::optional<double> answer = latestMs(evidence.hops.front().samples);
    const UnreachableEvidence* const word = wordBefore(1, evidence);
    return (answer ? "Your router answers in " + (*answer < 1 ? "under 1" : Text::whole(*answer)) + " ms"
                   : "Your router passes on what is sent")
           + (word != nullptr ? ", and " + saying(*word, evidence) : "; " + happens(evidence));
}

/// The last address before a place that is known; empty: none.
std::string addressBefore(std::size_t place, const std::vector<HopEvidence>& hops) {
    while (place-- > 0) {
        if (!hops[place].address.empty()) {
            return hops[place].address;
        }
    }
    return "";
}

} // namespace

std::string providerSentence(const Evidence& evidence, std::size_t place) {
    const std::string last = addressBefore(place, evidence.hops);
    if (place == 1 || last == evidence.hops.front().address) {
        return routerSentence(evidence);
    }
    const UnreachableEvidence* const word = wordBefore(place, evidence);
    return "The provider's network answers up to " + last
           + (word != nullptr ? ", which " + saying(*word, evidence) : "; " + happens(evidence));
}

std::string beyondSentence(const Evidence& evidence, std::size_t place) {
    const std::string last = addressBefore(place, evidence.hops);
    const bool isProvidersEnd = place == endOfProvider(evidence.hops);
    const UnreachableEvidence* const word = wordBefore(place, evidence);
    return (isProvidersEnd ? "The provider's network answers up to " : "Answers come from up to ") + last
           + (word != nullptr ? ", which " + saying(*word, evidence)
                              : "; " + std::string(nameOfSymptom(evidence)) + " begins after it.");
}

std::string hostSentence(const Evidence& evidence) {
    switch (symptomOf(evidence)) {
    case Symptom::silent:
        break;
    case Symptom::loses:
        return "Everything up to the host's network answers; only the host loses "
               + Text::whole(100 * lostShare(evidence.pings).value_or(0)) + "% of the answers.";
    case Symptom::late:
        return "Everything up to the host's network answers in time; only the host is "
               + Text::whole(extraDelay(evidence)) + " ms late.";
    }
    const UnreachableEvidence* const word = wordBefore(evidence.hops.size() - 1, evidence);
    return "Everything up to the host's network answers; "
           + (word != nullptr ? word->sender + " " + saying(*word, evidence) : "only the host does not.");
}

std::string forbiddenAtHomeSentence(const Evidence& evidence) {
    return "Your router (" + evidence.hops.front().address + ") forbids the way to " + pingedAddress(evidence)
           + ".";
}

std::string unclearSentence(std::size_t well, const std::vector<HopEvidence>& hops) {
    const std::string last = addressBefore(well, hops);
    if (well == 0 || last.empty()) {
        return notClearYet;
    }
    return (well == 1 ? "Your router is well" : "All is well up to " + last)
           + "; what is wrong beyond it is not clear.";
}

} // namespace tarnwick
