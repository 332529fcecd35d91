#include "core/Diagnosis/RouterWords.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// At a word for each probe, more than anyone looks back on.
constexpr std::size_t mostWords = 64;

} // namespace

void RouterWords::note(const std::string& sender, double at) {
    words_.push_back({.sender = sender, .at = at});
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
            senders.push_back({.sender = word.sender, .count = 1});
        } else {
            ++known->count;
        }
    }
    return senders;
}

} // namespace tarnwick
