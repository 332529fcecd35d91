// What programs would write into a journal.
#pragma once

#include "platform/ports/Journal.h"

#include <string>

namespace tarnwick::test {

inline constexpr const char* journalHost = "one.example";

/// Minutes are counted from the first one of 2026.
[[nodiscard]] HistoryTime minuteNumber(std::int64_t number);
/// Of `count` minutes from `first` on.
[[nodiscard]] Span minuteSpan(std::int64_t first, std::int64_t count);
/// Watched throughout, a ping each five seconds, answered in `ms`.
[[nodiscard]] Period minuteOf(std::int64_t number, double ms = 20);
/// That minute and nothing else.
[[nodiscard]] Journal::Batch batchOf(std::int64_t number, double ms = 20);
/// All that the journal has of the host.
[[nodiscard]] History allOf(Journal& journal, const std::string& host = journalHost);

} // namespace tarnwick::test
