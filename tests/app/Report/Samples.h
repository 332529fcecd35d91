// Histories as people have them, good and bad, for pages to look at and to print.
#pragma once

#include "core/History/History.h"
#include "core/History/LocalTime.h"

#include <string>
#include <vector>

namespace tarnwick::test {

struct Sample {
    std::string name{}; ///< of its file, without the ending
    std::string host{};
    History history{};
    Span wanted{};
};

/// The same at every call.
[[nodiscard]] std::vector<Sample> samples();

} // namespace tarnwick::test
