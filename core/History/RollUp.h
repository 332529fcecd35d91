// How the history stays small: what becomes of periods as they grow old.
#pragma once

#include "core/History/History.h"

#include <chrono>
#include <compare>
#include <map>
#include <optional>
#include <vector>

namespace tarnwick::RollUp {

/// Minutes become quarter hours, these hours, and nothing is kept longer than two years.
inline constexpr std::chrono::days minutesKept{7};
inline constexpr std::chrono::days quarterHoursKept{90};
inline constexpr std::chrono::days allKept{730};

/// Which period of a host.
struct Key {
    HistoryTime start{};
    PeriodLength length = PeriodLength::minute;

    friend auto operator<=>(const Key&, const Key&) = default;
};

/// What a period is to be at the time `now`: itself, a longer one that it becomes part of, or nothing when it
/// is to go. The whole of the longer one has to be old enough, so it is made once.
[[nodiscard]] std::optional<Key> placeOf(const Key& period, HistoryTime now);

struct Plan {
    std::map<Key, std::vector<Key>>
        merges{};                ///< the longer period, which may be there already, and its parts
    std::vector<Key> removals{}; ///< beyond what is kept

    friend bool operator==(const Plan&, const Plan&) = default;
};

/// What is to be done about these periods of one host at the time `now`.
[[nodiscard]] Plan planFor(const std::vector<Key>& periods, HistoryTime now);

/// Whatever ended before this is to go, episodes and gaps too.
[[nodiscard]] HistoryTime oldestKept(HistoryTime now);

/// Periods of this length that started at or after this time stay as they are.
[[nodiscard]] HistoryTime youngestDue(PeriodLength length, HistoryTime now);

} // namespace tarnwick::RollUp
