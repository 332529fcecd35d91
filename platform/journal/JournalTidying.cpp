#include "platform/journal/JournalTidying.h"

#include "core/History/RollUp.h"
#include "platform/journal/JournalRows.h"

#include <algorithm>

namespace tarnwick::JournalTidying {

namespace {

using JournalRows::HostId;

bool remove(Database& database, HostId host, const std::vector<RollUp::Key>& periods) {
    return std::ranges::all_of(
        periods, [&](const RollUp::Key& key) { return JournalRows::removePeriod(database, host, key); });
}

bool merge(
    Database& database, HostId host, const RollUp::Key& longer, const std::vector<RollUp::Key>& parts) {
    Period sum{.start = longer.start, .length = longer.length};
    for (const RollUp::Key& key : parts) {
        if (const auto part = JournalRows::readPeriod(database, host, key)) {
            sum.figures.merge(part->figures);
        }
    }
    return JournalRows::addPeriod(database, host, sum) && remove(database, host, parts);
}

bool rollUp(Database& database, HostId host, PeriodLength length, HistoryTime now) {
    const auto due = JournalRows::periodsBefore(database, host, length, RollUp::youngestDue(length, now));
    const RollUp::Plan plan = RollUp::planFor(due, now);
    const bool isMerged = std::ranges::all_of(
        plan.merges, [&](const auto& entry) { return merge(database, host, entry.first, entry.second); });
    return isMerged && remove(database, host, plan.removals);
}

bool removeOld(Database& database, HistoryTime now) {
    const std::int64_t oldest = RollUp::oldestKept(now).time_since_epoch().count();
    return database.prepare("DELETE FROM episodes WHERE end <= ?").bind(1, oldest).run()
           && database.prepare("DELETE FROM gaps WHERE end <= ?").bind(1, oldest).run();
}

bool removeSurplus(Database& database) {
    return database
               .prepare("DELETE FROM episodes WHERE start < (SELECT start FROM episodes ORDER BY start DESC"
                        " LIMIT 1 OFFSET ?)")
               .bind(1, mostRows - 1)
               .run()
           && database
                  .prepare("DELETE FROM gaps WHERE start < (SELECT start FROM gaps ORDER BY start DESC"
                           " LIMIT 1 OFFSET ?)")
                  .bind(1, mostRows - 1)
                  .run();
}

bool removeForgottenHosts(Database& database) {
    return database.execute("DELETE FROM hosts WHERE id NOT IN (SELECT host FROM periods)"
                            " AND id NOT IN (SELECT host FROM episodes)");
}

} // namespace

bool tidy(Database& database, HistoryTime now) {
    for (const HostId host : JournalRows::allHosts(database)) {
        for (const PeriodLength length : allPeriodLengths) {
            if (!rollUp(database, host, length, now)) {
                return false;
            }
        }
    }
    return removeOld(database, now) && removeSurplus(database) && removeForgottenHosts(database);
}

} // namespace tarnwick::JournalTidying
