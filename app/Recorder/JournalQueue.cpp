#include "app/Recorder/JournalQueue.h"

#include "app/Recorder/JournalEntries.h"

#include <algorithm>
#include <ranges>

namespace tarnwick {

void JournalQueue::put(const Period& minute) {
    JournalEntries::put(present().minutes, minute);
}

void JournalQueue::put(const Episode& episode) {
    JournalEntries::put(present().episodes, episode);
}

void JournalQueue::put(const Gap& gap) {
    JournalEntries::put(present().gaps, gap);
}

bool JournalQueue::withdraw(const Episode& episode) {
    return JournalEntries::remove(present().episodes, episode);
}

bool JournalQueue::withdraw(const Gap& gap) {
    return JournalEntries::remove(present().gaps, gap);
}

void JournalQueue::write(Journal& journal, HistoryTime until) {
    static_cast<void>(present());
    while (!waiting_.empty()) {
        waiting_.front().until = until;
        if (!journal.write(waiting_.front())) {
            dropSurplus();
            return;
        }
        waiting_.erase(waiting_.begin());
    }
}

void JournalQueue::addTo(History& history, const std::string& host) const {
    for (const Journal::Batch& batch : waiting_) {
        JournalEntries::put(history, host, batch);
    }
}

Journal::Batch& JournalQueue::present() {
    if (waiting_.empty() || waiting_.back().host != host_) {
        waiting_.push_back({.host = host_});
    }
    return waiting_.back();
}

template<class Entry>
void JournalQueue::keepNewest(std::vector<Entry> Journal::Batch::* entries) {
    std::size_t room = mostEntries;
    for (Journal::Batch& batch : std::views::reverse(waiting_)) {
        std::vector<Entry>& own = batch.*entries;
        if (own.size() > room) {
            own.erase(own.begin(), own.end() - static_cast<std::ptrdiff_t>(room));
        }
        room -= own.size();
    }
}

void JournalQueue::dropSurplus() {
    keepNewest(&Journal::Batch::minutes);
    keepNewest(&Journal::Batch::episodes);
    keepNewest(&Journal::Batch::gaps);
    std::erase_if(waiting_, [](const Journal::Batch& batch) {
        return batch.minutes.empty() && batch.episodes.empty() && batch.gaps.empty();
    });
}

} // namespace tarnwick
