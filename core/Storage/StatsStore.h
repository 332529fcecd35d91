// The statistics file: the all-time counters of every host, as JSON.
#pragma once

#include "core/StatCounter.h"
#include "core/Storage/FileStore.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <system_error>

namespace tarnwick {

/// Counters by host, as the user wrote it.
using StatsByHost = std::map<std::string, StatCounter>;

struct StatsStore {
    std::filesystem::path url; ///< the statistics file

    /// The user's folder for application data: $XDG_DATA_HOME, else ~/.local/share.
    [[nodiscard]] static std::filesystem::path supportDirectory();
    /// "Tarnwick/stats.json" in there.
    [[nodiscard]] static StatsStore defaultStore();

    /// All or nothing: none when the file can't be read or a single counter in it is wrong. A missing file
    /// holds no figures.
    [[nodiscard]] std::optional<StatsByHost> read() const;
    /// Likewise. From a file that can't be read: the figures that were last saved to survive a power cut, or
    /// none.
    [[nodiscard]] StatsByHost load() const;
    /// Those last saved to survive a power cut; none when there are none.
    [[nodiscard]] StatsByHost flushedFigures() const;

    /// Hosts that are stored at most: a file of 8 MiB.
    static constexpr std::size_t mostHosts = 20'000;

    /// Replaces the file as a whole; creates its folder. After an error the old file is unchanged.
    [[nodiscard]] std::error_code save(
        const StatsByHost& stats, FileStore::Durability durability = FileStore::Durability::powerCut) const;
};

/// Drops the hosts with the fewest pings until `StatsStore::mostHosts` are left. `kept` stays. Returns how
/// many were dropped.
std::size_t dropLeastPinged(StatsByHost& stats, const std::string& kept);

} // namespace tarnwick
