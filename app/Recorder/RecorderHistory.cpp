// What the recorder tells of the past: the journal, and what is not in it yet.
#include "app/Recorder/Recorder.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

bool isSame(const Period& one, const Period& other) {
    return one.start == other.start && one.length == other.length;
}

bool isSame(const Episode& one, const Episode& other) {
    return one.kind == other.kind && one.start == other.start;
}

bool isSame(const Gap& one, const Gap& other) {
    return one.kind == other.kind && one.span.from == other.span.from;
}

/// As the journal would take these entries in: `combine` makes one of two that are the same.
template<class Entry, class Combine>
void takeIn(std::vector<Entry>& known, const std::vector<Entry>& entries, Combine combine) {
    for (const Entry& entry : entries) {
        const auto present =
            std::ranges::find_if(known, [&](const Entry& other) { return isSame(entry, other); });
        if (present != known.end()) {
            combine(*present, entry);
        } else {
            known.push_back(entry);
        }
    }
}

void takeIn(History& history, const Journal::Batch& batch) {
    const auto replace = [](auto& present, const auto& entry) { present = entry; };
    takeIn(history.periods, batch.minutes, [](Period& present, const Period& minute) {
        present.figures.merge(minute.figures);
    });
    takeIn(history.episodes, batch.episodes, replace);
    takeIn(history.gaps, batch.gaps, replace);
}

} // namespace

std::vector<Journal::Batch> Recorder::unwritten(const std::string& host) const {
    std::vector<Journal::Batch> batches = waiting_;
    Journal::Batch present{.host = host_, .minutes = book_.booked()};
    if (open_) {
        present.episodes.push_back(*open_);
    }
    if (interruption_) {
        present.gaps.push_back(
            {.kind = interruption_->kind, .span = {.from = interruption_->span.from, .to = wallNow()}});
    }
    batches.push_back(std::move(present));
    for (Journal::Batch& batch : batches) {
        if (batch.host != host) {
            batch = {.gaps = std::move(batch.gaps)};
        }
    }
    return batches;
}

History Recorder::history(const std::string& host, const Span& span) const {
    if (journal_ == nullptr) {
        return {};
    }
    History history = journal_->read(host, span);
    const Journal::State state = journal_->state();
    if (!isRecording_ || state == Journal::State::otherWrites || state == Journal::State::newerFile) {
        return history;
    }
    for (const Journal::Batch& batch : unwritten(host)) {
        takeIn(history, batch);
    }
    std::ranges::sort(history.periods, {}, &Period::start);
    std::ranges::sort(history.episodes, {}, &Episode::start);
    std::ranges::sort(history.gaps, {}, [](const Gap& gap) { return gap.span.from; });
    history.until = wallNow();
    return history;
}

} // namespace tarnwick
