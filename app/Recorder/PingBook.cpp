#include "app/Recorder/PingBook.h"

#include <algorithm>

namespace tarnwick {

void PingBook::sent(std::uint64_t id, bool isCounted, HistoryTime now) {
    unsettled_[id] = {.date = now, .isCounted = isCounted};
    if (unsettled_.size() > mostUnsettled) {
        unsettled_.erase(unsettled_.begin());
    }
    if (isCounted) {
        minutes_.sent(now);
    }
}

std::optional<PingBook::Ping> PingBook::settle(std::uint64_t id) {
    const auto found = unsettled_.find(id);
    if (found == unsettled_.end()) {
        return std::nullopt;
    }
    const Ping ping = found->second;
    unsettled_.erase(found);
    return ping;
}

void PingBook::replied(std::uint64_t id, double ms, bool isWithinTimeout, HistoryTime now) {
    const auto ping = settle(id);
    lastAnswered_ = std::max(lastAnswered_, id);
    lastSign_ = now;
    if (losses_ && id >= losses_->first) {
        losses_.reset();
    }
    if (!ping || !ping->isCounted) {
        return;
    }
    if (isWithinTimeout) {
        minutes_.replied(ping->date, ms);
    } else {
        minutes_.lost(ping->date);
    }
}

std::optional<HistoryTime> PingBook::lost(std::uint64_t id) {
    const auto ping = settle(id);
    if (!ping) {
        return std::nullopt;
    }
    if (ping->isCounted) {
        minutes_.lost(ping->date);
    }
    if (id > lastAnswered_) {
        Losses& losses = losses_ ? *losses_ : losses_.emplace(Losses{.first = id, .since = ping->date});
        losses.first = std::min(losses.first, id);
        losses.since = std::min(losses.since, ping->date);
        ++losses.count;
    }
    return ping->date;
}

void PingBook::interrupted(HistoryTime now) {
    unsettled_.clear();
    losses_.reset();
    lastSign_ = now;
    minutes_.interrupted();
}

void PingBook::clockSetBack(HistoryTime now) {
    lastSign_ = std::min(lastSign_, now);
}

Silence PingBook::silence() const {
    std::optional<HistoryTime> since;
    if (losses_) {
        since = losses_->since;
    }
    if (const auto first = unsettled_.upper_bound(lastAnswered_); first != unsettled_.end()) {
        since = std::min(since.value_or(first->second.date), first->second.date);
    }
    return {.since = since.value_or(lastSign_), .lost = losses_ ? losses_->count : 0};
}

} // namespace tarnwick
