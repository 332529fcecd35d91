// Asks each name server of this machine about a name.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

/// Main thread.
class NameServerCheck {
public:
    /// One entry for each server, in the system's order.
    using Answer = std::function<void(const std::vector<NameServerEvidence>&)>;

    NameServerCheck() = default;
    NameServerCheck(const NameServerCheck&) = delete;
    NameServerCheck& operator=(const NameServerCheck&) = delete;
    virtual ~NameServerCheck() = default;

    /// Asks each server once for the host's address of that family (AF_INET or AF_INET6).
    ///
    /// `answer` is called once all have answered or can no longer, within seconds, never inside this call,
    /// nor when this object has ended; with nothing where there is no server, or the name is none for
    /// servers. A new question takes the place of one that is still open, whose answer never comes.
    virtual void ask(const std::string& host, std::int32_t family, Answer answer) = 0;
};

} // namespace tarnwick
