// The path to the host as texts: one row a hop.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <string>
#include <vector>

namespace tarnwick {

struct PathRow {
    std::string hop;     ///< its number, from 1
    std::string address; ///< or "No answer"
    std::string name{};  ///< of that address; empty: none is known
    std::string loss;    ///< "20%", or "—" while nothing is known
    std::string latency; ///< "14 ms", "<1 ms", or "—"
    /// The latency as a part of the path's longest, or of 20 ms if that is longer: 0 to 1.
    double barShare = 0;
    bool isLossy = false;

    /// For assistive technology.
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const PathRow&, const PathRow&) = default;
};

[[nodiscard]] std::vector<PathRow> pathRows(const std::vector<HopEvidence>& path);

} // namespace tarnwick
