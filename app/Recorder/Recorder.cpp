#include "app/Recorder/Recorder.h"

#include "app/Recorder/JournalEntries.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarnwick {

namespace {

HistoryTime minuteOf(HistoryTime time) {
    return floorTo(time, secondsIn(PeriodLength::minute));
}

} // namespace

void Recorder::start(const std::string& host) {
    if (journal_ == nullptr) {
        return;
    }
    isRecording_ = true;
    queue_.setHost(host);
    time_.start(now());
    writtenIn_ = minuteOf(wallNow());
    forgetPings();
    discard();
    hasTicked_ = false;
}

void Recorder::stop() {
    if (!isRecording_) {
        return;
    }
    episode_.end(wallNow());
    write();
    isRecording_ = false;
    time_.stop();
    forgetPings();
}

void Recorder::setHost(const std::string& host) {
    if (!isRecording_ || host == queue_.host()) {
        return;
    }
    episode_.end(wallNow());
    collect();
    forgetPings();
    queue_.setHost(host);
    write();
}

Moment Recorder::now() const {
    return {.monotonic = loop_.now(), .wall = std::chrono::floor<std::chrono::seconds>(loop_.wallNow())};
}

void Recorder::pingSent(std::uint64_t id, bool isCounted) {
    if (isRecording_) {
        pings_.sent(id, isCounted, wallNow());
    }
}

void Recorder::pingReplied(std::uint64_t id, double ms, bool isWithinTimeout) {
    pings_.replied(id, ms, isWithinTimeout, wallNow());
}

void Recorder::pingLost(std::uint64_t id) {
    if (const auto sent = pings_.lost(id)) {
        episode_.pingLost(*sent);
    }
}

void Recorder::forgetPings() {
    pings_.interrupted(wallNow());
    episode_.interrupted();
}

void Recorder::tick() {
    if (!isRecording_) {
        return;
    }
    if (!std::exchange(hasTicked_, true)) {
        journal_->open();
        noteTimeBefore();
    }
    if (!time_.isInterrupted()) {
        passed(time_.tick(now()));
    }
    if (minuteOf(wallNow()) != writtenIn_ && !time_.isInDoubt(loop_.now())) {
        write();
    }
}

void Recorder::passed(const WatchedTime::Passed& passed) {
    const auto& [before, wall] = passed.span;
    switch (passed.kind) {
    case WatchedTime::Passed::Kind::gap:
        forgetPings();
        return;
    case WatchedTime::Passed::Kind::setBack:
        episode_.clockSetBack(before, wall);
        pings_.clockSetBack(wall);
        break;
    case WatchedTime::Passed::Kind::watched:
        break;
    }
    pings_.watched(std::min(before, wall), passed.seconds);
}

void Recorder::interrupt(Gap::Kind kind) {
    if (!isRecording_ || time_.isInterrupted()) {
        return;
    }
    const HistoryTime from = time_.interrupt(kind, now());
    episode_.end(std::min(from, wallNow()));
    forgetPings();
    write();
}

void Recorder::resume() {
    if (isRecording_ && time_.isInterrupted() && time_.resume(now())) {
        forgetPings();
    }
}

void Recorder::follow(const ConnectionState& state) {
    if (!isRecording_ || time_.isInterrupted()) {
        return;
    }
    if (episode_.follow(state, pings_.silence(), wallNow())) {
        write();
    }
}

void Recorder::save() {
    if (isRecording_) {
        write();
    }
}

bool Recorder::clear() {
    if (journal_ == nullptr) {
        return true;
    }
    const bool isGone = journal_->clear();
    forgetPast();
    return isGone;
}

std::string Recorder::problem() const {
    const std::string reason = isRecording_ ? journal_->problem() : std::string();
    if (reason.empty() || journal_->state() == Journal::State::otherWrites) {
        return {};
    }
    const bool isWritten = journal_->state() == Journal::State::writes;
    return (isWritten ? "The history begins anew: " : "The history is not stored: ") + reason + ".";
}

History Recorder::history(const std::string& host, const Span& span) const {
    if (journal_ == nullptr) {
        return {};
    }
    History history = journal_->read(host, span);
    if (!isRecording_ || !isOurs()) {
        return history;
    }
    queue_.addTo(history, host);
    Journal::Batch present{.host = queue_.host(), .minutes = pings_.minutes()};
    if (const auto& episode = episode_.get()) {
        present.episodes.push_back(*episode);
    }
    if (const auto gap = time_.interruption(wallNow())) {
        present.gaps.push_back(*gap);
    }
    JournalEntries::put(history, host, present);
    std::ranges::sort(history.periods, {}, &Period::start);
    std::ranges::sort(history.episodes, {}, &Episode::start);
    std::ranges::sort(history.gaps, {}, [](const Gap& gap) { return gap.span.from; });
    history.until = wallNow();
    return history;
}

bool Recorder::isOurs() const {
    return journal_->state() != Journal::State::otherWrites && journal_->state() != Journal::State::newerFile;
}

void Recorder::collect() {
    for (const Period& minute : pings_.takeMinutes()) {
        queue_.put(minute);
    }
    episode_.putNews();
}

void Recorder::discard() {
    queue_.clear();
    static_cast<void>(pings_.takeMinutes());
    episode_.queueWasCleared();
    time_.beginAnew(wallNow());
}

void Recorder::forgetPast() {
    discard();
    forgetPings();
    episode_.forgetPast(wallNow());
    time_.forgetPast(wallNow());
}

void Recorder::noteTimeBefore() {
    if (time_.knowsBefore() || journal_->state() != Journal::State::writes) {
        return;
    }
    const auto until = journal_->until();
    if (until && time_.begin() < *until && *until <= wallNow()) {
        discard(); // most of it has been recorded by another process
        episode_.cutBefore(*until);
        time_.cutBefore(*until);
    }
    time_.noteBefore(until);
}

void Recorder::write() {
    time_.endDoubt();
    writtenIn_ = minuteOf(wallNow());
    journal_->open();
    if (!isOurs()) {
        discard();
        return;
    }
    if (journal_->wasCleared()) {
        forgetPast();
    }
    noteTimeBefore();
    collect();
    queue_.write(*journal_, time_.putInterruption(wallNow()));
}

} // namespace tarnwick
