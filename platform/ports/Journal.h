// Where the past of the connection is kept.
#pragma once

#include "core/History/History.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// One process writes at a time; any may read and clear. Errors are values: what could not be kept is to be
/// tried again later. Main thread; a call may wait for the disk.
class Journal {
public:
    enum class State {
        writes,      ///< this process does
        otherWrites, ///< another process does
        newerFile,   ///< a newer version of the program has written it: it stays as it is
        cannotWrite, ///< for the reason in `problem`
    };

    /// What is written at once.
    struct Batch {
        std::string host{};              ///< of the minutes and episodes
        std::vector<Period> minutes{};   ///< added to what is known of them
        std::vector<Episode> episodes{}; ///< each in the place of that of the same kind and start
        std::vector<Gap> gaps{};         ///< likewise
        HistoryTime until{};             ///< how far the recording has come
    };

    Journal() = default;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    virtual ~Journal() = default;

    /// Becomes the writer if it can. An episode that a program left open when it was killed ends where its
    /// recording did.
    virtual State open() = 0;

    /// As the last call has found it.
    [[nodiscard]] virtual State state() const = 0;
    /// In the system's words; empty when there is none. A broken journal that was put aside is one, too.
    [[nodiscard]] virtual std::string problem() const = 0;

    /// How far any recording has come; nothing for an empty journal.
    [[nodiscard]] virtual std::optional<HistoryTime> until() = 0;

    /// Whether another process has cleared it since this one, as the writer, last opened or wrote it: what is
    /// still to be written may be of before that.
    [[nodiscard]] virtual bool wasCleared() = 0;

    /// All or nothing. False when nothing was kept.
    virtual bool write(const Batch& batch) = 0;

    /// What is known of a host in `span`; nothing of what can't be read.
    [[nodiscard]] virtual History read(const std::string& host, const Span& span) = 0;

    /// Those that something is known of, in the order of their names.
    [[nodiscard]] virtual std::vector<std::string> hosts() = 0;

    /// Forgets everything, for good: also what is broken, was put aside, or is of a newer version. False when
    /// something may be left.
    virtual bool clear() = 0;
};

} // namespace tarnwick
