#include "platform/journal/JournalSchema.h"

#include <array>
#include <cstddef>

namespace tarnwick::JournalSchema {

namespace {

/// Times are seconds since 1970, watched times milliseconds, latencies microseconds. Lengths are seconds.
constexpr const char* firstTables = R"(
    CREATE TABLE hosts (
        id INTEGER PRIMARY KEY,
        name TEXT NOT NULL UNIQUE
    ) STRICT;
    CREATE TABLE periods (
        host INTEGER NOT NULL,
        length INTEGER NOT NULL,
        start INTEGER NOT NULL,
        watched INTEGER NOT NULL,
        sent INTEGER NOT NULL,
        replied INTEGER NOT NULL,
        lost INTEGER NOT NULL,
        fastest INTEGER NOT NULL,
        slowest INTEGER NOT NULL,
        jitter_sum INTEGER NOT NULL,
        jitter_count INTEGER NOT NULL,
        latencies BLOB NOT NULL,
        PRIMARY KEY (host, length, start)
    ) STRICT, WITHOUT ROWID;
    CREATE TABLE episodes (
        host INTEGER NOT NULL,
        kind TEXT NOT NULL,
        start INTEGER NOT NULL,
        end INTEGER,
        blame TEXT,
        likelihood TEXT,
        evidence TEXT,
        address TEXT NOT NULL,
        interface TEXT NOT NULL,
        lost INTEGER NOT NULL,
        PRIMARY KEY (host, start, kind)
    ) STRICT, WITHOUT ROWID;
    CREATE TABLE gaps (
        kind TEXT NOT NULL,
        start INTEGER NOT NULL,
        end INTEGER NOT NULL,
        PRIMARY KEY (start, kind)
    ) STRICT, WITHOUT ROWID;
    CREATE TABLE recording (
        id INTEGER PRIMARY KEY CHECK (id = 0),
        until INTEGER NOT NULL
    ) STRICT;
    PRAGMA user_version = 1;
)";

/// From each version to the next; the first of them to 1.
constexpr std::array steps{firstTables};
constexpr std::int64_t tableCount = 5;
static_assert(steps.size() == version);

} // namespace

std::optional<std::int64_t> versionOf(Database& database) {
    return database.number("PRAGMA user_version");
}

bool hasTablesOf(Database& database, std::int64_t found) {
    // Those of the library are not counted: tools make some, as "sqlite_stat1".
    const auto all = database.number(
        "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND substr(name, 1, 7) <> 'sqlite_'");
    return found == 0 ? all == 0 : all == tableCount;
}

bool prepare(Database& database) {
    Transaction transaction(database);
    const auto present = versionOf(database);
    if (!transaction.isOpen() || !present || *present < 0) {
        return false;
    }
    for (auto step = static_cast<std::size_t>(*present); step < steps.size(); ++step) {
        if (!database.execute(steps.at(step))) {
            return false;
        }
    }
    return transaction.commit();
}

} // namespace tarnwick::JournalSchema
