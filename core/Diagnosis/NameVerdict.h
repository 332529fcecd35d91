// What the name servers' answers say of a host whose name can't be found, or was found late.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"

#include <optional>

namespace tarnwick {

/// Milliseconds from which a lookup counts as late: the resolver has tried a second time by then, or nearly
/// so.
inline constexpr double lateLookupMs = 1500;

/// Whether the server is a reason for a lookup that fails or takes long.
[[nodiscard]] bool isReason(const NameServerEvidence& server);

/// The name can't be found. Nothing where the way to the servers may be the reason.
[[nodiscard]] std::optional<Verdict> missingNameVerdict(const Evidence& evidence);

/// The name was found late, and nothing else is wrong.
[[nodiscard]] std::optional<Verdict> lateNameVerdict(const Evidence& evidence);

/// A server is slow while other things are wrong.
[[nodiscard]] std::optional<Verdict> slowServerVerdict(const Evidence& evidence);

} // namespace tarnwick
