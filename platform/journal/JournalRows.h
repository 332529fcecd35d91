// The past as rows of the journal's tables.
#pragma once

#include "core/History/History.h"
#include "core/History/RollUp.h"
#include "platform/journal/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Each returns nothing or false after a failure; `Database::problem` has the reason.
namespace tarnwick::JournalRows {

using HostId = std::int64_t;

/// Nothing, without a failure, for a host that is not there.
[[nodiscard]] std::optional<HostId> findHost(Database& database, const std::string& name);
[[nodiscard]] std::optional<HostId> findOrAddHost(Database& database, const std::string& name);
[[nodiscard]] std::vector<HostId> allHosts(Database& database);

/// The names of those with a period or an episode, in their order.
[[nodiscard]] std::vector<std::string> knownHosts(Database& database);

/// Adds the figures to those of the same period.
bool addPeriod(Database& database, HostId host, const Period& period);
[[nodiscard]] std::optional<Period> readPeriod(Database& database, HostId host, const RollUp::Key& key);
bool removePeriod(Database& database, HostId host, const RollUp::Key& key);
/// Those that started before `start`.
[[nodiscard]] std::vector<RollUp::Key> periodsBefore(
    Database& database, HostId host, PeriodLength length, HistoryTime start);
/// In the order of their starts.
[[nodiscard]] std::vector<Period> readPeriods(Database& database, HostId host, const Span& span);

bool putEpisode(Database& database, HostId host, const Episode& episode);
[[nodiscard]] std::vector<Episode> readEpisodes(Database& database, HostId host, const Span& span);
/// Of every host.
bool endOpenEpisodes(Database& database, HistoryTime end);

bool putGap(Database& database, const Gap& gap);
[[nodiscard]] std::vector<Gap> readGaps(Database& database, const Span& span);

bool putUntil(Database& database, HistoryTime until);
/// Nothing, without a failure, before the first recording.
[[nodiscard]] std::optional<HistoryTime> readUntil(Database& database);

/// What is known of a host in `span`.
[[nodiscard]] History readHistory(Database& database, const std::string& host, const Span& span);

} // namespace tarnwick::JournalRows
