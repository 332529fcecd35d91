#include "app/Recorder/OpenEpisode.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

bool OpenEpisode::follow(const ConnectionState& state, const Silence& silence, HistoryTime now) {
    const bool isOutageNews = followOutage(state, silence, now);
    followDegradation(state, now);
    takeDetails(state);
    return isOutageNews;
}

bool OpenEpisode::followOutage(const ConnectionState& state, const Silence& silence, HistoryTime now) {
    const bool isDown = state.trouble == Trouble::down;
    if (isDown == isOpen(Episode::Kind::outage)) {
        return false;
    }
    if (isDown) {
        endDegradation(silence.since);
        begin({.kind = Episode::Kind::outage, .start = silence.since, .pingsLost = silence.lost});
    } else {
        end(now);
        outageEnd_ = now;
    }
    return true;
}

void OpenEpisode::followDegradation(const ConnectionState& state, HistoryTime now) {
    if (isOpen(Episode::Kind::outage)) {
        return;
    }
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

/// The bars tell of pings that were lost in it.
bool OpenEpisode::isAfterOutage(HistoryTime now) const {
    return outageEnd_ && now - *outageEnd_ < barsLookBack;
}

void OpenEpisode::takeDetails(const ConnectionState& state) {
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

void OpenEpisode::pingLost(HistoryTime sent) {
    if (outageEnd_ && sent >= *outageEnd_) {
        outageEnd_.reset();
    }
    if (open_) {
        ++open_->pingsLost;
        hasNews_ = true;
    }
}

void OpenEpisode::clockSetBack(HistoryTime before, HistoryTime now) {
    if (open_) {
        const Episode::Kind kind = open_->kind;
        end(before);
        begin({.kind = kind, .start = now});
    }
    outageEnd_.reset();
}

void OpenEpisode::begin(const Episode& episode) {
    open_ = episode;
    hasNews_ = true;
    isTold_ = false;
    goodSince_.reset();
}

void OpenEpisode::endDegradation(HistoryTime outage) {
    if (!open_) {
        return;
    }
    if (open_->start >= outage) {
        const bool waits = queue_.withdraw(*open_);
        if (waits || !isTold_) {
            open_.reset(); // the bars fell because of the silence
        }
    }
    end(outage);
}

void OpenEpisode::end(HistoryTime time) {
    if (!open_) {
        return;
    }
    open_->end = std::max(std::min(time, goodSince_.value_or(time)), open_->start);
    queue_.put(*open_);
    open_.reset();
    hasNews_ = false;
    goodSince_.reset();
}

void OpenEpisode::cutBefore(HistoryTime time) {
    if (open_) {
        open_->start = std::max(open_->start, time);
    }
}

void OpenEpisode::forgetPast(HistoryTime now) {
    if (open_) {
        open_->start = now;
        open_->pingsLost = 0;
    }
}

void OpenEpisode::putNews() {
    if (open_ && std::exchange(hasNews_, false)) {
        queue_.put(*open_);
        isTold_ = true;
    }
}

void OpenEpisode::queueWasCleared() {
    hasNews_ = open_.has_value();
    isTold_ = false;
}

} // namespace tarnwick
