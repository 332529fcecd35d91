// Makes entries of the journal of what happens while the program runs.
#pragma once

#include "app/Recorder/ConnectionState.h"
#include "app/Recorder/JournalQueue.h"
#include "app/Recorder/OpenEpisode.h"
#include "app/Recorder/PingBook.h"
#include "app/Recorder/WatchedTime.h"
#include "core/RunLoop.h"
#include "platform/ports/Journal.h"

#include <cstdint>
#include <string>

namespace tarnwick {

/// Counts as the statistics do: pings sent while the connection is down are part of the outage, and of no
/// period's figures. Writes once a minute, and at once when an outage begins or ends; what could not be
/// written waits, as much of it as a day brings. While another process writes, nothing is kept. Main thread.
class Recorder {
public:
    /// Both outlive it. Without a journal nothing is recorded.
    Recorder(RunLoop& loop, Journal* journal) : loop_(loop), journal_(journal) {}

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Until then, nothing of what follows has an effect. The time since the last recording is a gap. The
    /// first tick opens the journal, so that no ping waits for the disk.
    void start(const std::string& host);
    /// Writes, and records nothing from then on.
    void stop();

    [[nodiscard]] bool isRecording() const { return isRecording_; }

    void setHost(const std::string& host);

    // Ids rise with every ping.
    void pingSent(std::uint64_t id, bool isCounted);
    /// After the time-out it counts as lost.
    void pingReplied(std::uint64_t id, double ms, bool isWithinTimeout);
    void pingLost(std::uint64_t id);

    /// Once a second, except while asleep. When none comes for more than a few seconds, that is a gap.
    void tick();
    /// Pinging stops until `resume`: a gap of this kind. One that the program outlives is written while it
    /// lasts.
    void interrupt(Gap::Kind kind);
    void resume();

    void follow(const ConnectionState& state);

    /// Writes what there is.
    void save();

    /// What is known of a host in `span`, up to this moment: what is written, and what waits to be. Reads the
    /// disk, and writes nothing. Of what another process records, the last minute is missing.
    [[nodiscard]] History history(const std::string& host, const Span& span) const;

    /// Forgets all of the past, for every host, also while nothing is recorded. What lasts begins now. False
    /// when something may be left in the journal.
    bool clear();

    /// Why no history is stored, or what became of it, as a sentence; empty while all is well.
    [[nodiscard]] std::string problem() const;

private:
    [[nodiscard]] Moment now() const;

    [[nodiscard]] HistoryTime wallNow() const { return now().wall; }

    void forgetPings();
    void passed(const WatchedTime::Passed& passed);
    /// False while another process, or a newer version, has the journal.
    [[nodiscard]] bool isOurs() const;
    void collect();
    void discard();
    void forgetPast();
    void noteTimeBefore();
    void write();

    RunLoop& loop_;
    Journal* journal_; ///< null: none
    bool isRecording_ = false;
    bool hasTicked_ = false; ///< since the start
    JournalQueue queue_;
    PingBook pings_;
    OpenEpisode episode_{queue_};
    WatchedTime time_{queue_};
    HistoryTime writtenIn_{}; ///< the minute of the last attempt
};

} // namespace tarnwick
