#include "app/Recorder/JournalEntries.h"

#include <algorithm>
#include <ranges>

namespace tarnwick::JournalEntries {

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

/// Null when there is none.
template<class Entry>
Entry* sameIn(std::vector<Entry>& entries, const Entry& wanted) {
    const auto newestFirst = std::views::reverse(entries);
    const auto found =
        std::ranges::find_if(newestFirst, [&](const Entry& entry) { return isSame(entry, wanted); });
    return found != newestFirst.end() ? &*found : nullptr;
}

template<class Entry>
void putInPlace(std::vector<Entry>& entries, const Entry& entry) {
    if (Entry* const present = sameIn(entries, entry)) {
        *present = entry;
    } else {
        entries.push_back(entry);
    }
}

template<class Entry>
bool removeSame(std::vector<Entry>& entries, const Entry& unwanted) {
    return std::erase_if(entries, [&](const Entry& entry) { return isSame(entry, unwanted); }) > 0;
}

} // namespace

void put(std::vector<Period>& periods, const Period& period) {
    if (Period* const present = sameIn(periods, period)) {
        present->figures.merge(period.figures);
    } else {
        periods.push_back(period);
    }
}

void put(std::vector<Episode>& episodes, const Episode& episode) {
    putInPlace(episodes, episode);
}

void put(std::vector<Gap>& gaps, const Gap& gap) {
    putInPlace(gaps, gap);
}

void put(History& history, const std::string& host, const Journal::Batch& batch) {
    if (batch.host == host) {
        for (const Period& minute : batch.minutes) {
            put(history.periods, minute);
        }
        for (const Episode& episode : batch.episodes) {
            put(history.episodes, episode);
        }
    }
    for (const Gap& gap : batch.gaps) {
        put(history.gaps, gap);
    }
}

bool remove(std::vector<Episode>& episodes, const Episode& episode) {
    return removeSame(episodes, episode);
}

bool remove(std::vector<Gap>& gaps, const Gap& gap) {
    return removeSame(gaps, gap);
}

} // namespace tarnwick::JournalEntries
