#include "app/Recorder/Recorder.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tarnwick {

namespace {

/// Episodes and gaps of the same kind and start are the same ones.
void putInPlace(std::vector<Episode>& episodes, const Episode& episode) {
    std::erase_if(episodes, [&](const Episode& present) {
        return present.kind == episode.kind && present.start == episode.start;
    });
    episodes.push_back(episode);
}

void putInPlace(std::vector<Gap>& gaps, const Gap& gap) {
    std::erase_if(gaps, [&](const Gap& present) {
        return present.kind == gap.kind && present.span.from == gap.span.from;
    });
    gaps.push_back(gap);
}

void addMinute(std::vector<Period>& minutes, const Period& minute) {
    const auto newestFirst = std::views::reverse(minutes);
    const auto present = std::ranges::find(newestFirst, minute.start, &Period::start);
    if (present != newestFirst.end()) {
        present->figures.merge(minute.figures);
    } else {
        minutes.push_back(minute);
    }
}

} // namespace

void Recorder::start(const std::string& host) {
    if (journal_ == nullptr) {
        return;
    }
    isRecording_ = true;
    host_ = host;
    lastTick_ = loop_.now();
    lastWall_ = wallNow();
    lastMinute_ = floorTo(lastWall_, secondsIn(PeriodLength::minute));
    lastSign_ = lastWall_;
    lastGap_.reset();
    discard();
    journal_->open();
    noteTimeBefore();
}

void Recorder::stop() {
    if (!isRecording_) {
        return;
    }
    end(wallNow());
    write();
    isRecording_ = false;
    interruption_.reset();
    forgetPings();
}

void Recorder::setHost(const std::string& host) {
    if (!isRecording_ || host == host_) {
        return;
    }
    end(wallNow());
    collect();
    forgetPings();
    host_ = host;
    write();
}

HistoryTime Recorder::wallNow() const {
    return std::chrono::floor<std::chrono::seconds>(loop_.wallNow());
}

void Recorder::pingSent(std::uint64_t id, bool isCounted) {
    if (!isRecording_) {
        return;
    }
    const HistoryTime date = wallNow();
    unsettled_[id] = {.date = date, .isCounted = isCounted};
    if (unsettled_.size() > mostUnsettled) {
        unsettled_.erase(unsettled_.begin());
    }
    if (isCounted) {
        book_.sent(date);
    }
}

std::optional<Recorder::Ping> Recorder::settle(std::uint64_t id) {
    const auto found = unsettled_.find(id);
    if (found == unsettled_.end()) {
        return std::nullopt;
    }
    const Ping ping = found->second;
    unsettled_.erase(found);
    return ping;
}

void Recorder::pingReplied(std::uint64_t id, double ms, bool isWithinTimeout) {
    const auto ping = settle(id);
    lastAnswered_ = std::max(lastAnswered_, id);
    lastSign_ = wallNow();
    if (silence_ && id >= silence_->firstLost) {
        silence_.reset();
    }
    if (ping && ping->isCounted) {
        if (isWithinTimeout) {
            book_.replied(ping->date, ms);
        } else {
            book_.lost(ping->date);
        }
    }
}

void Recorder::pingLost(std::uint64_t id) {
    const auto ping = settle(id);
    if (!ping) {
        return;
    }
    if (ping->isCounted) {
        book_.lost(ping->date);
    }
    if (id > lastAnswered_) {
        Silence& silence =
            silence_ ? *silence_ : silence_.emplace(Silence{.firstLost = id, .since = ping->date});
        silence.firstLost = std::min(silence.firstLost, id);
        silence.since = std::min(silence.since, ping->date);
        ++silence.lost;
    }
    if (outageEnd_ && ping->date >= *outageEnd_) {
        outageEnd_.reset();
    }
    if (open_) {
        ++open_->pingsLost;
        hasNews_ = true;
    }
}

void Recorder::forgetPings() {
    unsettled_.clear();
    silence_.reset();
    lastSign_ = wallNow();
    outageEnd_.reset();
    book_.interrupted();
}

void Recorder::tick() {
    if (!isRecording_) {
        return;
    }
    const HistoryTime wall = wallNow();
    if (interruption_) {
        if (isNextMinute(wall)) {
            write();
        }
        return;
    }
    const HistoryTime lastWall = std::exchange(lastWall_, wall);
    const double elapsed = loop_.now() - std::exchange(lastTick_, loop_.now());
    if (wall - lastWall > std::chrono::duration<double>(longestHoldUp)) {
        noteGap({.kind = Gap::Kind::notRunning, .span = {.from = lastWall, .to = wall}});
        mayWriteFrom_ = loop_.now() + lateWord;
    } else {
        if (lastWall - wall >= smallestStepBack) {
            clockSetBack(lastWall, wall);
        }
        book_.watched(std::min(lastWall, wall), std::min(elapsed, longestHoldUp));
    }
    if (isNextMinute(wall) && loop_.now() >= mayWriteFrom_) {
        write();
    }
}

bool Recorder::isNextMinute(HistoryTime wall) const {
    return floorTo(wall, secondsIn(PeriodLength::minute)) != lastMinute_;
}

void Recorder::noteGap(const Gap& gap) {
    lastGap_ = gap;
    putInPlace(waiting().gaps, gap);
    forgetPings();
}

HistoryTime Recorder::noteInterruption(HistoryTime now) {
    if (!interruption_) {
        return now;
    }
    Gap soFar = *interruption_;
    if (soFar.kind == Gap::Kind::asleep) {
        return soFar.span.from; // the machine may run out of power
    }
    soFar.span.to = std::max(now, soFar.span.from);
    if (!soFar.span.isEmpty()) {
        putInPlace(waiting().gaps, soFar);
    }
    return soFar.span.to;
}

void Recorder::clockSetBack(HistoryTime before, HistoryTime now) {
    if (open_) {
        const Episode::Kind kind = open_->kind;
        end(before);
        begin({.kind = kind, .start = now});
    }
    if (lastGap_ && lastGap_->span.to > now) {
        lastGap_->span.to = std::max(lastGap_->span.from, now);
        putInPlace(waiting().gaps, *lastGap_);
    }
    lastSign_ = std::min(lastSign_, now);
    outageEnd_.reset();
}

void Recorder::interrupt(Gap::Kind kind) {
    if (!isRecording_ || interruption_) {
        return;
    }
    const HistoryTime now = wallNow();
    // A sleep may be told of afterwards: before the tick that finds it, or after.
    const bool isOver = now - lastWall_ > std::chrono::duration<double>(longestHoldUp);
    HistoryTime from = isOver ? lastWall_ : now;
    if (loop_.now() < std::exchange(mayWriteFrom_, 0)) {
        from = waiting().gaps.back().span.from;
        waiting().gaps.pop_back();
    }
    end(std::min(from, now));
    interruption_ = Gap{.kind = kind, .span = {.from = from, .to = from}};
    forgetPings();
    write();
}

void Recorder::resume() {
    if (!isRecording_ || !interruption_) {
        return;
    }
    lastWall_ = wallNow();
    lastTick_ = loop_.now();
    Gap gap = *interruption_;
    interruption_.reset();
    gap.span.to = lastWall_;
    if (!gap.span.isEmpty()) {
        noteGap(gap);
    }
}

void Recorder::follow(const ConnectionState& state) {
    if (!isRecording_ || interruption_) {
        return;
    }
    followOutage(state);
    followDegradation(state);
    takeDetails(state);
}

void Recorder::followOutage(const ConnectionState& state) {
    const bool isDown = state.trouble == Trouble::down;
    if (isDown == isOpen(Episode::Kind::outage)) {
        return;
    }
    if (isDown) {
        const HistoryTime start = startOfSilence();
        endDegradation(start);
        begin({.kind = Episode::Kind::outage, .start = start, .pingsLost = silence_ ? silence_->lost : 0});
        takeDetails(state);
    } else {
        end(wallNow());
        outageEnd_ = wallNow();
    }
    write();
}

/// The bars tell of pings that were lost in it.
bool Recorder::isAfterOutage(HistoryTime now) const {
    return outageEnd_ && now - *outageEnd_ < barsLookBack;
}

void Recorder::followDegradation(const ConnectionState& state) {
    if (isOpen(Episode::Kind::outage)) {
        return;
    }
    const HistoryTime now = wallNow();
    if (state.trouble == Trouble::degraded) {
        goodSince_.reset();
        if (!open_ && !isAfterOutage(now)) {
            begin({.kind = Episode::Kind::degradation, .start = now});
        }
        return;
    }
    outageEnd_.reset();
    if (open_) {
        goodSince_ = goodSince_.value_or(now);
        if (now - *goodSince_ >= steadilyGood) {
            end(*goodSince_);
        }
    }
}

void Recorder::takeDetails(const ConnectionState& state) {
    if (!open_) {
        return;
    }
    Episode told = *open_;
    if (state.verdict) {
        told.verdict = state.verdict;
    }
    if (!state.address.empty()) {
        told.address = state.address;
    }
    if (!state.interface.empty()) {
        told.interface = state.interface;
    }
    if (told != *open_) {
        open_ = told;
        hasNews_ = true;
    }
}

HistoryTime Recorder::startOfSilence() const {
    const auto sentSince = unsettled_.upper_bound(lastAnswered_);
    if (sentSince == unsettled_.end()) {
        return silence_ ? silence_->since : lastSign_;
    }
    return silence_ ? std::min(silence_->since, sentSince->second.date) : sentSince->second.date;
}

void Recorder::endDegradation(HistoryTime outage) {
    if (!open_) {
        return;
    }
    const bool isOnset = open_->start >= outage;
    const auto waits = std::erase_if(waiting().episodes, [this](const Episode& episode) {
        return episode.kind == open_->kind && episode.start == open_->start;
    });
    if (isOnset && (!isTold_ || waits > 0)) {
        open_.reset(); // the bars fell because of the silence
    }
    end(outage);
}

void Recorder::begin(const Episode& episode) {
    open_ = episode;
    hasNews_ = true;
    isTold_ = false;
    goodSince_.reset();
}

void Recorder::end(HistoryTime time) {
    if (!open_) {
        return;
    }
    open_->end = std::max(std::min(time, goodSince_.value_or(time)), open_->start);
    putInPlace(waiting().episodes, *open_);
    open_.reset();
    hasNews_ = false;
    goodSince_.reset();
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

void Recorder::forgetPast() {
    discard();
    forgetPings();
    mayWriteFrom_ = 0; // the gap that waited is gone
    if (open_) {
        open_->start = completeFrom_;
        open_->pingsLost = 0;
    }
    if (interruption_) {
        interruption_->span = {.from = completeFrom_, .to = completeFrom_};
    }
}

std::string Recorder::problem() const {
    const std::string reason = isRecording_ ? journal_->problem() : std::string();
    if (reason.empty() || journal_->state() == Journal::State::otherWrites) {
        return {};
    }
    const bool isWritten = journal_->state() == Journal::State::writes;
    return (isWritten ? "The history begins anew: " : "The history is not stored: ") + reason + ".";
}

Journal::Batch& Recorder::waiting() {
    if (waiting_.empty() || waiting_.back().host != host_) {
        waiting_.push_back({.host = host_});
    }
    return waiting_.back();
}

void Recorder::collect() {
    Journal::Batch& batch = waiting();
    for (const Period& minute : book_.take()) {
        addMinute(batch.minutes, minute);
    }
    if (open_ && std::exchange(hasNews_, false)) {
        putInPlace(batch.episodes, *open_);
        isTold_ = true;
    }
}

void Recorder::discard() {
    waiting_.clear();
    static_cast<void>(book_.take());
    completeFrom_ = wallNow();
    knowsTimeBefore_ = false;
    hasNews_ = open_.has_value();
    isTold_ = false;
}

void Recorder::noteTimeBefore() {
    if (knowsTimeBefore_ || journal_->state() != Journal::State::writes) {
        return;
    }
    const auto until = journal_->until();
    if (until && completeFrom_ < *until && *until <= wallNow()) {
        discard(); // most of it has been recorded by another process
        if (open_) {
            open_->start = std::max(open_->start, *until);
        }
        if (interruption_) {
            interruption_->span.from = std::max(interruption_->span.from, *until);
        }
    }
    knowsTimeBefore_ = true;
    const HistoryTime knownFrom =
        interruption_ ? std::min(completeFrom_, interruption_->span.from) : completeFrom_;
    if (until && *until < knownFrom) {
        lastGap_ = Gap{.kind = Gap::Kind::notRunning, .span = {.from = *until, .to = knownFrom}};
        waiting().gaps.push_back(*lastGap_);
    }
}

void Recorder::write() {
    mayWriteFrom_ = 0;
    const HistoryTime now = wallNow();
    lastMinute_ = floorTo(now, secondsIn(PeriodLength::minute));
    const Journal::State state = journal_->open();
    if (state == Journal::State::otherWrites || state == Journal::State::newerFile) {
        discard();
        return;
    }
    if (journal_->wasCleared()) {
        forgetPast();
    }
    noteTimeBefore();
    collect();
    const HistoryTime until = noteInterruption(now);
    while (!waiting_.empty()) {
        waiting_.front().until = until;
        if (!journal_->write(waiting_.front())) {
            dropSurplus();
            return;
        }
        waiting_.erase(waiting_.begin());
    }
}

template<class Entry>
void Recorder::keepNewest(std::vector<Entry>& entries) {
    if (entries.size() > mostEntries) {
        entries.erase(entries.begin(), entries.end() - static_cast<std::ptrdiff_t>(mostEntries));
    }
}

void Recorder::dropSurplus() {
    std::size_t kept = 0;
    for (Journal::Batch& batch : std::views::reverse(waiting_)) {
        const std::size_t room = mostMinutes - kept;
        if (batch.minutes.size() > room) {
            batch.minutes.erase(
                batch.minutes.begin(), batch.minutes.end() - static_cast<std::ptrdiff_t>(room));
        }
        kept += batch.minutes.size();
        keepNewest(batch.episodes);
        keepNewest(batch.gaps);
    }
}

} // namespace tarnwick
