// The way out of this machine, as the system tells it at one moment.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/ResolvedAddress.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

struct LinkState {
    LinkEvidence link{};
    /// Numeric; the next one on the way to the address asked for, or that address if it is the router to the
    /// internet.
    std::optional<std::string> router{};
    NeighborState neighbor = NeighborState::unknown; ///< of that router
    std::optional<std::uint64_t> sentBytes{};        ///< by the interface since it came up
    std::optional<std::uint64_t> receivedBytes{};
};

/// Main thread.
class LinkInspector {
public:
    using Answer = std::function<void(const std::optional<LinkState>&)>;

    LinkInspector() = default;
    LinkInspector(const LinkInspector&) = delete;
    LinkInspector& operator=(const LinkInspector&) = delete;
    virtual ~LinkInspector() = default;

    /// Looks at the interface that leads to the address or, without one, to the internet; when there is no
    /// way, at the one that would lead there. Which one that is, it knows best when it was asked before while
    /// there was a way. Nothing is sent.
    ///
    /// `answer` is called soon, never inside this call, nor when this object has ended; with nothing where
    /// the system can't be asked. One question is asked at a time: of those that wait for an earlier one's
    /// answer, only the latest is answered.
    virtual void inspect(const std::optional<ResolvedAddress>& to, Answer answer) = 0;
};

} // namespace tarnwick
