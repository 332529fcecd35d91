// What routers have said of the host: that it can't be reached.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace tarnwick {

class RouterWords {
public:
    /// `at`: monotonic seconds, which never fall.
    void note(const std::string& sender, RouterWord word, double at);

    void forget() { words_.clear(); }

    /// From `since` on; each sender once, in the order of their first words.
    [[nodiscard]] std::vector<UnreachableEvidence> since(double since) const;

private:
    struct Word {
        std::string sender;
        RouterWord word;
        double at;
    };

    std::deque<Word> words_;
};

/// What the router before a link has said, where nothing comes through. `place`: of the link that leads to
/// that hop of the path. Null: nothing.
[[nodiscard]] const UnreachableEvidence* wordBefore(std::size_t place, const Evidence& evidence);

} // namespace tarnwick
