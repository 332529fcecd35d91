// What routers have said of the host: that it can't be reached.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <deque>
#include <string>
#include <vector>

namespace tarnwick {

class RouterWords {
public:
    /// `at`: monotonic seconds, which never fall.
    void note(const std::string& sender, double at);

    void forget() { words_.clear(); }

    /// From `since` on; each sender once, in the order of their first words.
    [[nodiscard]] std::vector<UnreachableEvidence> since(double since) const;

private:
    struct Word {
        std::string sender;
        double at;
    };

    std::deque<Word> words_;
};

} // namespace tarnwick
