// The all-time figures of every host, and whether this process may write them.
#pragma once

#include "app/Reading/Measurements.h"
#include "core/Storage/StatsStore.h"
#include "core/Storage/WriterLock.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <system_error>

namespace tarnwick {

/// Only one process writes the statistics file: the one that holds the lock beside it. Another one loads the
/// figures, counts on in memory, and takes over at a later save once the lock is free: from the figures on
/// disk, never over them.
class StatsRecorder {
public:
    using State = Recording;

    enum class Saved {
        kept,     ///< the counter passed in still holds, written or not
        tookOver, ///< the file holds figures that are not from here: this process has just become the writer,
                  ///< or the file has just come or become readable. Read `counterOf` again, as the figures on
                  ///< disk replace the counter passed in
    };

    explicit StatsRecorder(StatsStore store);

    /// Takes the lock if it is free, then reads the figures.
    void load();
    /// The counter of a host, empty when it has none.
    [[nodiscard]] StatCounter counterOf(const std::string& host) const;
    /// Remembers the host's counter and writes all that are not empty. After a failure to write the old file
    /// stands, and the next save tries again. A file that can't be read is kept under another name
    /// first.
    Saved save(const std::string& host, const StatCounter& counter, FileStore::Durability durability);

    /// Empties the host's counter: whatever the file holds for the host when this process next writes no
    /// longer counts. So a reset while another process records holds after the takeover.
    void reset(const std::string& host);

    [[nodiscard]] State state() const { return state_; }

    /// Why the last write failed, in the system's words; empty when it did not. For `State::records`.
    [[nodiscard]] std::string problem() const { return problem_ ? problem_.message() : std::string(); }

    /// The hosts that the last write left out, as there were too many.
    [[nodiscard]] std::size_t surplus() const { return surplus_; }

    /// Where this process has kept a file that it could not read; empty when it has kept none.
    [[nodiscard]] const std::filesystem::path& keptAside() const { return keptAside_; }

private:
    /// None when it can't be read.
    std::optional<StatsByHost> read();
    void take(std::optional<StatsByHost> present);
    [[nodiscard]] bool mustBeRead() const;
    [[nodiscard]] bool isFromAnotherWriter(const StatsByHost& present) const;
    void write(const std::string& host, FileStore::Durability durability);
    /// Returns why it failed.
    std::error_code replaceFile(StatsByHost figures, FileStore::Durability durability);

    StatsStore store_;
    WriterLock lock_;
    State state_ = State::cannotRecord;
    std::error_code problem_;
    std::filesystem::path keptAside_;
    std::size_t surplus_ = 0;
    StatsByHost allTimeStats_;
    std::set<std::string> resetHosts_;             ///< since this process last wrote
    StatsByHost onDisk_;                           ///< as last read or written here
    bool isUnread_ = false;                        ///< a file is there, and reading it failed
    FileStore::Version seen_;                      ///< of the file, when it was last read or written here
    std::optional<FileStore::Durability> written_; ///< of the file; none: another process wrote it
};

} // namespace tarnwick
