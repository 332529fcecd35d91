// How much of its own traffic an interface carries.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstdint>
#include <optional>

namespace tarnwick {

/// From the interface's byte counters, as they are read now and then.
class LineLoad {
public:
    /// `now`: monotonic seconds. Counters that have fallen begin anew.
    void note(std::uint64_t sentBytes, std::uint64_t receivedBytes, double now);
    void forget();

    /// Between the latest two readings; nothing carried where there are no two.
    [[nodiscard]] const LoadEvidence& load() const { return load_; }

private:
    struct Reading {
        std::uint64_t sentBytes;
        std::uint64_t receivedBytes;
        double at;
    };

    std::optional<Reading> latest_;
    LoadEvidence load_;
};

} // namespace tarnwick
