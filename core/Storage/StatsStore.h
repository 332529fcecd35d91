// The statistics file: the all-time counters of every host, as JSON.
#pragma once

#include "core/StatCounter.h"
#include "core/Storage/FileStore.h"

#include <filesystem>
#include <map>
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

    /// All or nothing: no figures from a missing or unreadable file, or if a single counter is wrong.
    [[nodiscard]] StatsByHost load() const;

    /// Keeps a copy of a file that `load` can't read, so that the next `save` loses nothing.
    [[nodiscard]] std::error_code keepAsideIfUnreadable() const;

    /// Replaces the file as a whole; creates its folder. After an error the old file is unchanged.
    [[nodiscard]] std::error_code save(
        const StatsByHost& stats, FileStore::Durability durability = FileStore::Durability::powerCut) const;
};

} // namespace tarnwick
