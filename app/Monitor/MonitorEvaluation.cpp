// The monitor's tick: asking the watchdog, scoring the window, counting losses.
#include "app/Monitor/Monitor.h"
#include "core/Diagnosis/Median.h"

#include <unordered_set>
#include <utility>

namespace tarnwick {

namespace {

constexpr int ticksBetweenSaves = 20;
/// Seconds between two ticks. After more of them the program was stopped, or starved by a machine that
/// swaps. It is shorter than the shortest silence that counts as an outage.
constexpr double longestHoldUp = 3;

} // namespace

void Monitor::tick() {
    const double now = loop_.now();
    const double lastTick = std::exchange(lastTick_, now);
    if (asleep_) {
        return;
    }
    if (isPaused()) {
        tickInPause();
    } else {
        if (now - lastTick > longestHoldUp) {
            startSilenceAnew(lastTick, now);
        }
        judge(now);
    }
    if (onTick) {
        onTick(now);
    }
}

void Monitor::startSilenceAnew(double lastTick, double now) {
    watchdog_.heldUp(now);
    // What was sent after the tick that should have come was sent after the hold-up.
    const double holdUpBeganBy = lastTick + tickInterval;
    std::erase_if(pending_, [&](const PendingPing& ping) {
        return !ping.reply && !ping.lost && ping.sent <= holdUpBeganBy;
    });
}

void Monitor::judge(double now) {
    const PublishAtEnd publishAtEnd(*this);
    carryOut(watchdog_.tick(now));
    evaluate(now);
    diagnose(now);
    history_.tick();
    if (++tickCount_ == ticksBetweenSaves) {
        tickCount_ = 0;
        saveStatsOf(prefs_.hostname(), FileStore::Durability::crash);
    }
}

void Monitor::evaluate(double now) {
    const Evaluation evaluation = QualityScorer::evaluate(pending_, now, prefs_.scoringConfig());
    for (const PendingPing& ping : evaluation.newlyLost) {
        markLost(ping.id);
    }
    forgetUnsettledBookings();
    measured_.lossIsKnown = !pending_.empty();
    measured_.lossPercent = evaluation.lossPercent;
    // Without a new score the last one stays.
    if (evaluation.score) {
        measured_.score = evaluation.score;
    }
}

Trouble Monitor::trouble() const {
    if (measured_.status == Status::down) {
        return Trouble::down;
    }
    constexpr int mostBadBars = 3; // "Fair"
    const bool isBad = measured_.status == Status::up && measured_.score
                       && QualityScorer::bars(*measured_.score, barLevels) <= mostBadBars;
    return isBad ? Trouble::degraded : Trouble::none;
}

void Monitor::makeDiagnostician() {
    if (sources_) {
        diagnostician_.emplace(loop_, *sources_);
    }
}

void Monitor::diagnose(double now) {
    if (!diagnostician_) {
        return;
    }
    std::vector<double> answers;
    for (const Sample& sample : measured_.samples) {
        if (sample.rttMs && sample.date >= networkSince_) {
            answers.push_back(*sample.rttMs);
        }
    }
    diagnostician_->tick(
        {.now = now,
         .trouble = trouble(),
         .host = prefs_.hostname(),
         .address = pinged_,
         .startError = measured_.startError,
         .lookup = lookup_,
         .pings = pending_,
         .usualMs = medianOf(std::move(answers))});
    measured_.verdict = diagnostician_->verdict();
    measured_.path = diagnostician_->path();
}

void Monitor::markLost(std::uint64_t id) {
    measured_.ledger.lost(id);
    history_.pingLost(id);
    if (Sample* const sample = sampleOf(id)) {
        sample->lost = true;
    }
}

void Monitor::forgetUnsettledBookings() {
    if (measured_.ledger.bookings() == 0) {
        return;
    }
    std::unordered_set<std::uint64_t> ids;
    ids.reserve(pending_.size());
    for (const PendingPing& ping : pending_) {
        ids.insert(ping.id);
    }
    measured_.ledger.retain(ids);
}

void Monitor::carryOut(const ConnectionWatchdog::Actions& actions) {
    measured_.status = watchdog_.status();
    for (const ConnectionWatchdog::Action action : actions) {
        carryOut(action);
    }
}

void Monitor::carryOut(ConnectionWatchdog::Action action) {
    switch (action) {
    case ConnectionWatchdog::Action::restartPinger:
        restartPinger();
        break;
    case ConnectionWatchdog::Action::startTimedOut:
        stopPinging();
        measured_.startError = PingError::resolution("lookup timed out");
        break;
    case ConnectionWatchdog::Action::announceDown:
        diagnose(loop_.now());
        notifications_.post(
            "Tarnwick — Connection down", "Your internet connection seems to be down. "
                                              + presentReading().downReasonText + "."
                                              + (measured_.verdict ? " " + measured_.verdict->evidence : ""));
        break;
    case ConnectionWatchdog::Action::announceUp:
        notifications_.post("Tarnwick — Connection restored", "Your internet connection has been restored.");
        break;
    }
}

} // namespace tarnwick
