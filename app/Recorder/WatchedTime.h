// When nothing was pinged: before the start, in a sleep, in a pause, while the program was held up. And the
// clock that is set.
#pragma once

#include "app/Recorder/JournalQueue.h"

#include <chrono>
#include <optional>

namespace tarnwick {

/// By both clocks.
struct Moment {
    double monotonic = 0; ///< seconds
    HistoryTime wall{};
};

/// Puts each gap into the queue as it ends. Main thread.
class WatchedTime {
public:
    /// What has passed since the tick before.
    struct Passed {
        enum class Kind { watched, setBack, gap };

        Kind kind = Kind::watched;
        Span span{};        ///< by the wall clock; after `setBack` it ends before it begins
        double seconds = 0; ///< watched
    };

    /// It outlives this object.
    explicit WatchedTime(JournalQueue& queue) : queue_(queue) {}

    WatchedTime(const WatchedTime&) = delete;
    WatchedTime& operator=(const WatchedTime&) = delete;

    void start(Moment now);

    /// The recording ends: so does what interrupts it.
    void stop() { interruption_.reset(); }

    /// Not while interrupted.
    [[nodiscard]] Passed tick(Moment now);

    /// Nothing is pinged until `resume`. Returns since when: a sleep may be told of afterwards.
    HistoryTime interrupt(Gap::Kind kind, Moment now);
    /// Ends the interruption. False when it took no time.
    bool resume(Moment now);

    [[nodiscard]] bool isInterrupted() const { return interruption_.has_value(); }

    /// The interruption, as far as it has come.
    [[nodiscard]] std::optional<Gap> interruption(HistoryTime now) const;
    /// Puts it into the queue. Returns how far the recording has come.
    HistoryTime putInterruption(HistoryTime now);

    /// The last gap may yet turn out to be a sleep: it is not to be written.
    [[nodiscard]] bool isInDoubt(double monotonic) const { return monotonic < doubtUntil_; }

    /// It is written as it is.
    void endDoubt() { doubtUntil_ = 0; }

    /// What has been since then is in the queue or written.
    [[nodiscard]] HistoryTime begin() const { return begin_; }

    [[nodiscard]] bool knowsBefore() const { return knowsBefore_; }

    /// The time from there up to the beginning is a gap. Nothing: nothing was recorded before.
    void noteBefore(std::optional<HistoryTime> lastRecording);

    /// What was put into the queue is lost.
    void beginAnew(HistoryTime now);
    /// An interruption is said to have begun then, if it began earlier.
    void cutBefore(HistoryTime time);
    /// An interruption begins now.
    void forgetPast(HistoryTime now);

private:
    /// Seconds between two ticks; after more of them the program was held up.
    static constexpr double longestHoldUp = 3;
    /// A sleep may be told of this long after the tick that has found it.
    static constexpr double lateWord = 5;
    /// The wall clock is slowed down and hurried by less.
    static constexpr std::chrono::seconds smallestStepBack{2};

    void put(const Gap& gap);
    void clockSetBack(HistoryTime now);

    JournalQueue& queue_;
    Moment lastTick_;
    double doubtUntil_ = 0;           ///< monotonic
    std::optional<Gap> interruption_; ///< its end is not known yet
    std::optional<Gap> lastGap_;      ///< in the queue or written
    HistoryTime begin_{};
    bool knowsBefore_ = false; ///< the gap before `begin_` is in the queue or written
};

} // namespace tarnwick
