// The journal in a file of SQLite's.
#pragma once

#include "core/Storage/WriterLock.h"
#include "platform/journal/Database.h"
#include "platform/ports/Journal.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace tarnwick {

/// A lock beside the file makes one process the writer; it goes with the process. Without `open` it only
/// reads. What was written survives a crash of the program. A power cut may take what was written last; the
/// file stays whole.
class SqliteJournal final : public Journal {
public:
    explicit SqliteJournal(std::filesystem::path file);

    /// "Tarnwick/journal.sqlite" in the user's folder of state.
    [[nodiscard]] static std::filesystem::path defaultPath();

    State open() override;

    [[nodiscard]] State state() const override { return state_; }

    [[nodiscard]] std::string problem() const override;
    [[nodiscard]] std::optional<HistoryTime> until() override;
    [[nodiscard]] bool wasCleared() override;
    bool write(const Batch& batch) override;
    [[nodiscard]] History read(const std::string& host, const Span& span) override;
    [[nodiscard]] std::vector<std::string> hosts() override;
    bool clear() override;

private:
    /// Which file a name leads to.
    struct FileId {
        std::uint64_t device = 0;
        std::uint64_t number = 0;

        friend bool operator==(const FileId&, const FileId&) = default;
    };

    [[nodiscard]] static FileId idOf(const std::filesystem::path& file);
    /// As the writer.
    State openFile();
    bool store(const Batch& batch);
    bool put(const Batch& batch);
    bool tidyWhenDue(HistoryTime now);
    void noteFailure();
    /// Another process that writes or reads goes on with it.
    bool emptyPresent();
    /// What can't be emptied: it is broken, of a newer version, or the disk is full. False while another
    /// process writes.
    bool removePresent();
    [[nodiscard]] static bool empty(Database& database);

    std::filesystem::path file_;
    WriterLock lock_;
    State state_ = State::cannotWrite;
    std::string problem_;
    std::filesystem::path brokenOne_;    ///< put aside by this process
    std::unique_ptr<Database> database_; ///< while this process writes
    FileId opened_;
    std::optional<HistoryTime> tidied_; ///< the hour for which the journal was tidied last
    bool isBroken_ = false;             ///< as the last failure has shown
    bool hasRecorded_ = false; ///< the file that is open has held a recording since it was cleared here
};

} // namespace tarnwick
