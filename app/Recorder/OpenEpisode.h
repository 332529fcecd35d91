// The outage or degradation that lasts.
#pragma once

#include "app/Recorder/ConnectionState.h"
#include "app/Recorder/JournalQueue.h"
#include "app/Recorder/PingBook.h"

#include <chrono>
#include <optional>

namespace tarnwick {

/// Puts each into the queue as it ends. Main thread.
class OpenEpisode {
public:
    /// It outlives this object.
    explicit OpenEpisode(JournalQueue& queue) : queue_(queue) {}

    OpenEpisode(const OpenEpisode&) = delete;
    OpenEpisode& operator=(const OpenEpisode&) = delete;

    /// Nothing when there is none.
    [[nodiscard]] const std::optional<Episode>& get() const { return open_; }

    /// True when an outage has begun or ended. It begins with the silence.
    bool follow(const ConnectionState& state, const Silence& silence, HistoryTime now);
    /// A ping, that was sent then.
    void pingLost(HistoryTime sent);
    /// What lasts ends here, and goes on from `now`.
    void clockSetBack(HistoryTime before, HistoryTime now);

    /// Pinging was: what follows has to do with no outage of before.
    void interrupted() { outageEnd_.reset(); }

    void end(HistoryTime time);

    /// What lasts is said to have begun then, if it began earlier.
    void cutBefore(HistoryTime time);
    /// What lasts begins now.
    void forgetPast(HistoryTime now);

    /// Puts what lasts into the queue if it has changed since.
    void putNews();
    /// What was put into the queue is lost: all of it is news.
    void queueWasCleared();

private:
    /// Seconds of a good connection that end a degradation.
    static constexpr std::chrono::seconds steadilyGood{30};
    /// How long lost pings keep the bars low.
    static constexpr std::chrono::seconds barsLookBack{30};

    [[nodiscard]] bool isOpen(Episode::Kind kind) const { return open_ && open_->kind == kind; }

    bool followOutage(const ConnectionState& state, const Silence& silence, HistoryTime now);
    void followDegradation(const ConnectionState& state, HistoryTime now);
    [[nodiscard]] bool isAfterOutage(HistoryTime now) const;
    void takeDetails(const ConnectionState& state);
    void begin(const Episode& episode);
    /// Forgets it if it was the onset of the outage that begins then.
    void endDegradation(HistoryTime outage);

    JournalQueue& queue_;
    std::optional<Episode> open_;
    bool hasNews_ = false;                 ///< that are not in the queue
    bool isTold_ = false;                  ///< it has been put into the queue
    std::optional<HistoryTime> goodSince_; ///< of a degradation
    std::optional<HistoryTime> outageEnd_; ///< while the bars may still tell of it
};

} // namespace tarnwick
