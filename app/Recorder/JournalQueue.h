// What is recorded and not written yet.
#pragma once

#include "platform/ports/Journal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnwick {

/// What the journal does not take waits, up to a bound: then the oldest goes. Main thread.
class JournalQueue {
public:
    /// How many minutes wait at most, and how many episodes, and gaps.
    static constexpr std::size_t mostEntries = 1440;

    /// Of the minutes and episodes that are put from then on.
    void setHost(const std::string& host) { host_ = host; }

    [[nodiscard]] const std::string& host() const { return host_; }

    /// A part of a minute adds to the one that waits.
    void put(const Period& minute);
    /// Takes the place of that of the same kind and start.
    void put(const Episode& episode);
    void put(const Gap& gap);
    /// False when it does not wait, of the present host.
    bool withdraw(const Episode& episode);
    bool withdraw(const Gap& gap);

    void clear() { waiting_.clear(); }

    /// `until`: how far the recording has come, which is written also when nothing waits.
    void write(Journal& journal, HistoryTime until);

    /// Adds what waits of the host, and every gap. The order is lost.
    void addTo(History& history, const std::string& host) const;

private:
    [[nodiscard]] Journal::Batch& present();
    template<class Entry>
    void keepNewest(std::vector<Entry> Journal::Batch::* entries);
    void dropSurplus();

    std::string host_;
    std::vector<Journal::Batch> waiting_; ///< one each time that a host was watched, oldest first
};

} // namespace tarnwick
