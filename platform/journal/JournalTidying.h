// How the journal stays small.
#pragma once

#include "core/History/Span.h"
#include "platform/journal/Database.h"

#include <cstdint>

namespace tarnwick::JournalTidying {

/// Kept at most, the latest ones, of episodes and of gaps: a connection that comes and goes all the time must
/// not fill the disk. A few megabytes.
inline constexpr std::int64_t mostRows = 20'000;

/// Merges and removes what is due at the time `now`. Within the caller's transaction; false after a failure.
bool tidy(Database& database, HistoryTime now);

} // namespace tarnwick::JournalTidying
