#include "app/Recorder/WatchedTime.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

void WatchedTime::start(Moment now) {
    lastTick_ = now;
    beginAnew(now.wall);
}

WatchedTime::Passed WatchedTime::tick(Moment now) {
    const Moment last = std::exchange(lastTick_, now);
    Passed passed{.span = {.from = last.wall, .to = now.wall}};
    if (now.wall - last.wall > std::chrono::duration<double>(longestHoldUp)) {
        passed.kind = Passed::Kind::gap;
        put({.kind = Gap::Kind::notRunning, .span = passed.span});
        doubtUntil_ = now.monotonic + lateWord;
        return passed;
    }
    passed.seconds = std::min(now.monotonic - last.monotonic, longestHoldUp);
    if (last.wall - now.wall >= smallestStepBack) {
        passed.kind = Passed::Kind::setBack;
        clockSetBack(now.wall);
    }
    return passed;
}

void WatchedTime::clockSetBack(HistoryTime now) {
    if (lastGap_ && lastGap_->span.to > now) {
        lastGap_->span.to = std::max(lastGap_->span.from, now);
        queue_.put(*lastGap_);
    }
}

HistoryTime WatchedTime::interrupt(Gap::Kind kind, Moment now) {
    // A sleep may be told of afterwards: before the tick that finds it, or after.
    const bool isOver = now.wall - lastTick_.wall > std::chrono::duration<double>(longestHoldUp);
    HistoryTime from = isOver ? lastTick_.wall : now.wall;
    if (lastGap_ && isInDoubt(now.monotonic)) {
        from = lastGap_->span.from;
        queue_.withdraw(*lastGap_);
        lastGap_.reset();
    }
    endDoubt();
    interruption_ = Gap{.kind = kind, .span = {.from = from, .to = from}};
    return from;
}

bool WatchedTime::resume(Moment now) {
    lastTick_ = now;
    const auto gap = interruption(now.wall);
    interruption_.reset();
    if (!gap || gap->span.isEmpty()) {
        return false;
    }
    put(*gap);
    return true;
}

std::optional<Gap> WatchedTime::interruption(HistoryTime now) const {
    if (!interruption_) {
        return std::nullopt;
    }
    return Gap{.kind = interruption_->kind, .span = {.from = interruption_->span.from, .to = now}};
}

HistoryTime WatchedTime::putInterruption(HistoryTime now) {
    const auto gap = interruption(now);
    if (!gap) {
        return now;
    }
    if (gap->kind == Gap::Kind::asleep || gap->span.isEmpty()) {
        return gap->span.from; // the machine may run out of power in a sleep
    }
    queue_.put(*gap);
    return gap->span.to;
}

void WatchedTime::noteBefore(std::optional<HistoryTime> lastRecording) {
    knowsBefore_ = true;
    const HistoryTime from = interruption_ ? std::min(begin_, interruption_->span.from) : begin_;
    if (lastRecording && *lastRecording < from) {
        put({.kind = Gap::Kind::notRunning, .span = {.from = *lastRecording, .to = from}});
    }
}

void WatchedTime::put(const Gap& gap) {
    lastGap_ = gap;
    queue_.put(gap);
}

void WatchedTime::beginAnew(HistoryTime now) {
    begin_ = now;
    knowsBefore_ = false;
    lastGap_.reset();
}

void WatchedTime::cutBefore(HistoryTime time) {
    if (interruption_) {
        interruption_->span.from = std::max(interruption_->span.from, time);
    }
}

void WatchedTime::forgetPast(HistoryTime now) {
    if (interruption_) {
        interruption_->span.from = now;
    }
}

} // namespace tarnwick
