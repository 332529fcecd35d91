// Makes entries of the journal of what happens while the program runs.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Diagnosis/Verdict.h"
#include "core/History/MinuteBook.h"
#include "core/RunLoop.h"
#include "platform/ports/Journal.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// How the connection is at one moment.
struct ConnectionState {
    Trouble trouble = Trouble::none;
    std::optional<Verdict> verdict{};
    std::string address{};   ///< that is pinged; empty when none is known
    std::string interface{}; ///< of the way out; empty when there is none
};

/// Counts as the statistics do: pings sent while the connection is down are part of the outage, and of no
/// period's figures. Writes once a minute, and at once when an outage begins or ends; what could not be
/// written is kept for a day. While another process writes, nothing is kept. Main thread.
class Recorder {
public:
    /// Both outlive it. Without a journal nothing is recorded.
    Recorder(RunLoop& loop, Journal* journal) : loop_(loop), journal_(journal) {}

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Until then, nothing of what follows has an effect. The time since the last recording is a gap.
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
    /// Seconds between two ticks; after more of them the program was held up.
    static constexpr double longestHoldUp = 3;
    /// A sleep may be told of this long after the tick that has found it.
    static constexpr double lateWord = 5;
    /// The wall clock is slowed down and hurried by less.
    static constexpr std::chrono::seconds smallestStepBack{2};
    /// Seconds of a good connection that end a degradation.
    static constexpr std::chrono::seconds steadilyGood{30};
    /// How long lost pings keep the bars low.
    static constexpr std::chrono::seconds barsLookBack{30};
    /// How many minutes wait to be written at most.
    static constexpr std::size_t mostMinutes = 1440;
    /// And how many episodes, and gaps, of a host.
    static constexpr std::size_t mostEntries = 1440;
    /// How many pings wait for their outcome at most: with the longest time-out, one a second.
    static constexpr std::size_t mostUnsettled = 4096;

    struct Ping {
        HistoryTime date{};
        bool isCounted = false;
    };

    /// Pings that were lost since the last answer.
    struct Silence {
        std::uint64_t firstLost = 0;
        HistoryTime since{}; ///< when that one was sent
        std::int64_t lost = 0;
    };

    [[nodiscard]] HistoryTime wallNow() const;
    std::optional<Ping> settle(std::uint64_t id);
    void forgetPings();

    void noteGap(const Gap& gap);
    /// A pause, as far as it has come. Returns how far the recording has.
    HistoryTime noteInterruption(HistoryTime now);
    [[nodiscard]] bool isNextMinute(HistoryTime wall) const;
    void clockSetBack(HistoryTime before, HistoryTime now);

    void followOutage(const ConnectionState& state);
    void followDegradation(const ConnectionState& state);
    [[nodiscard]] bool isAfterOutage(HistoryTime now) const;
    void takeDetails(const ConnectionState& state);
    void begin(const Episode& episode);
    void end(HistoryTime time);
    /// Forgets it if it was the onset of the outage that begins then.
    void endDegradation(HistoryTime outage);

    [[nodiscard]] bool isOpen(Episode::Kind kind) const { return open_ && open_->kind == kind; }

    [[nodiscard]] HistoryTime startOfSilence() const;

    /// Without what waits of other hosts, but with every gap.
    [[nodiscard]] std::vector<Journal::Batch> unwritten(const std::string& host) const;
    [[nodiscard]] Journal::Batch& waiting();
    void collect();
    void discard();
    void forgetPast();
    void noteTimeBefore();
    void write();
    void dropSurplus();
    template<class Entry>
    static void keepNewest(std::vector<Entry>& entries);

    RunLoop& loop_;
    Journal* journal_; ///< null: none
    bool isRecording_ = false;
    std::string host_;
    MinuteBook book_;
    std::map<std::uint64_t, Ping> unsettled_;
    std::uint64_t lastAnswered_ = 0;
    std::optional<Silence> silence_;
    HistoryTime lastSign_{}; ///< when the last answer came, or what is watched began

    std::optional<Episode> open_;
    bool hasNews_ = false;                 ///< of the open episode, that are not waiting yet
    bool isTold_ = false;                  ///< the open episode is written or waits
    std::optional<HistoryTime> goodSince_; ///< of an open degradation
    std::optional<HistoryTime> outageEnd_; ///< while the bars may still tell of it

    double lastTick_ = 0;     ///< monotonic
    double mayWriteFrom_ = 0; ///< monotonic: until then the last gap may turn out to be a sleep
    HistoryTime lastWall_{};
    std::optional<Gap> interruption_; ///< its end is not known yet
    std::optional<Gap> lastGap_;

    std::vector<Journal::Batch> waiting_; ///< to be written, one a host; the last one is of the present host
    HistoryTime completeFrom_{};          ///< what has been since then is written or waits
    bool knowsTimeBefore_ = false;        ///< the gap before `completeFrom_` is written or waits
    HistoryTime lastMinute_{};            ///< in which was written
};

} // namespace tarnwick
