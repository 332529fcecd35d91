// How the connection is at one moment.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"

#include <optional>
#include <string>

namespace tarnwick {

struct ConnectionState {
    Trouble trouble = Trouble::none;
    std::optional<Verdict> verdict{};
    std::string address{};   ///< that is pinged; empty when none is known
    std::string interface{}; ///< of the way out; empty when there is none
};

} // namespace tarnwick
