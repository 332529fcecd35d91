#include "core/Diagnosis/RouterWords.h"

#include "core/Diagnosis/Symptom.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// At a word for each probe, more than anyone looks back on.
constexpr std::size_t mostWords = 64;

} // namespace

void RouterWords::note(const std::string& sender, RouterWord word, double at) {
    words_.push_back({.sender = sender, .word = word, .at = at});
    if (words_.size() > mostWords) {
        words_.pop_front();
    }
}

std::vector<UnreachableEvidence> RouterWords::since(double since) const {
    std::vector<UnreachableEvidence> senders;
    for (const Word& word : words_) {
        if (word.at < since) {
            continue;
        }
        const auto known = std::ranges::find(senders, word.sender, &UnreachableEvidence::sender);
        if (known == senders.end()) {
            senders.push_back({.sender = word.sender, .count = 1, .word = word.word});
        } else {
            ++known->count;
            known->word = word.word;
        }
    }
    return senders;
}

const UnreachableEvidence* wordBefore(std::size_t place, const Evidence& evidence) {
    if (place == 0 || symptomOf(evidence) != Symptom::silent) {
        return nullptr;
    }
    const auto word = std::ranges::find(
        evidence.unreachable, evidence.hops[place - 1].address, &UnreachableEvidence::sender);
    return word == evidence.unreachable.end() ? nullptr : &*word;
}

} // namespace tarnwick
