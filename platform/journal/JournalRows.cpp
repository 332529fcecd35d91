#include "platform/journal/JournalRows.h"

#include "core/Diagnosis/Verdict.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace tarnwick::JournalRows {

namespace {

constexpr std::string_view periodColumns =
    "start, length, watched, sent, replied, lost, fastest, slowest, jitter_sum, jitter_count, latencies";

std::int64_t secondsOf(HistoryTime time) {
    return time.time_since_epoch().count();
}

HistoryTime timeOf(std::int64_t seconds) {
    return HistoryTime(std::chrono::seconds(seconds));
}

/// A thousandth of the unit is stored as 1.
std::int64_t thousandths(double value) {
    return std::llround(value * 1000);
}

double fromThousandths(std::int64_t stored) {
    return static_cast<double>(stored) / 1000;
}

std::optional<PeriodLength> periodLengthOf(std::int64_t seconds) {
    const auto* const found =
        std::ranges::find(allPeriodLengths, std::chrono::seconds(seconds), [](PeriodLength length) {
            return secondsIn(length);
        });
    return found != allPeriodLengths.end() ? std::optional(*found) : std::nullopt;
}

/// From a row of `periodColumns`. Nothing for one that this program can't have written.
std::optional<Period> periodIn(const Statement& row) {
    const auto length = periodLengthOf(row.number(1));
    auto latencies = LatencyHistogram::decoded(row.text(10));
    if (!length || !latencies) {
        return std::nullopt;
    }
    return Period{
        .start = timeOf(row.number(0)),
        .length = *length,
        .figures = {
            .watchedSeconds = fromThousandths(row.number(2)),
            .sent = row.number(3),
            .replied = row.number(4),
            .lost = row.number(5),
            .fastestMs = fromThousandths(row.number(6)),
            .slowestMs = fromThousandths(row.number(7)),
            .jitterSumMs = fromThousandths(row.number(8)),
            .jitterCount = row.number(9),
            .latencies = *std::move(latencies),
        }};
}

bool putPeriod(Database& database, HostId host, const Period& period) {
    const PeriodFigures& figures = period.figures;
    return database
        .prepare(
            "INSERT OR REPLACE INTO periods (host, " + std::string(periodColumns)
            + ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .bind(1, host)
        .bind(2, secondsOf(period.start))
        .bind(3, std::int64_t{secondsIn(period.length).count()})
        .bind(4, thousandths(figures.watchedSeconds))
        .bind(5, figures.sent)
        .bind(6, figures.replied)
        .bind(7, figures.lost)
        .bind(8, thousandths(figures.fastestMs))
        .bind(9, thousandths(figures.slowestMs))
        .bind(10, thousandths(figures.jitterSumMs))
        .bind(11, figures.jitterCount)
        .bindBytes(12, figures.latencies.encoded())
        .run();
}

std::string_view nameOf(Episode::Kind kind) {
    return kind == Episode::Kind::outage ? "outage" : "degradation";
}

std::string_view nameOf(Gap::Kind kind) {
    switch (kind) {
    case Gap::Kind::asleep:
        return "asleep";
    case Gap::Kind::paused:
        return "paused";
    case Gap::Kind::notRunning:
        break;
    }
    return "notRunning";
}

Gap::Kind gapNamed(std::string_view name) {
    for (const Gap::Kind kind : {Gap::Kind::asleep, Gap::Kind::paused}) {
        if (name == nameOf(kind)) {
            return kind;
        }
    }
    return Gap::Kind::notRunning;
}

/// From the columns blame, likelihood and evidence at `column`.
std::optional<Verdict> verdictIn(const Statement& row, int column) {
    if (row.isNull(column)) {
        return std::nullopt;
    }
    return Verdict{
        .blame = blameNamed(row.text(column)),
        .likelihood = likelihoodNamed(row.text(column + 1)),
        .evidence = row.text(column + 2)};
}

void bindVerdict(Statement& statement, int parameter, const std::optional<Verdict>& verdict) {
    if (!verdict) {
        return; // what is not bound is null
    }
    statement.bind(parameter, nameOf(verdict->blame))
        .bind(parameter + 1, nameOf(verdict->likelihood))
        .bind(parameter + 2, verdict->evidence);
}

} // namespace

std::optional<HostId> findHost(Database& database, const std::string& name) {
    Statement statement = database.prepare("SELECT id FROM hosts WHERE name = ?");
    return statement.bind(1, name).step() ? std::optional(statement.number(0)) : std::nullopt;
}

std::optional<HostId> findOrAddHost(Database& database, const std::string& name) {
    if (const auto present = findHost(database, name)) {
        return present;
    }
    const bool isAdded = database.prepare("INSERT INTO hosts (name) VALUES (?)").bind(1, name).run();
    return isAdded ? findHost(database, name) : std::nullopt;
}

std::vector<HostId> allHosts(Database& database) {
    std::vector<HostId> hosts;
    Statement statement = database.prepare("SELECT id FROM hosts");
    while (statement.step()) {
        hosts.push_back(statement.number(0));
    }
    return hosts;
}

std::vector<std::string> knownHosts(Database& database) {
    std::vector<std::string> names;
    Statement statement = database.prepare(
        "SELECT name FROM hosts WHERE id IN (SELECT host FROM periods UNION SELECT host FROM episodes)"
        " ORDER BY name");
    while (statement.step()) {
        names.push_back(statement.text(0));
    }
    return names;
}

bool addPeriod(Database& database, HostId host, const Period& period) {
    Period sum = period;
    if (const auto present = readPeriod(database, host, {.start = period.start, .length = period.length})) {
        sum.figures.merge(present->figures);
    }
    return putPeriod(database, host, sum);
}

std::optional<Period> readPeriod(Database& database, HostId host, const RollUp::Key& key) {
    Statement statement = database.prepare(
        "SELECT " + std::string(periodColumns) + " FROM periods WHERE host = ? AND length = ? AND start = ?");
    statement.bind(1, host)
        .bind(2, std::int64_t{secondsIn(key.length).count()})
        .bind(3, secondsOf(key.start));
    return statement.step() ? periodIn(statement) : std::nullopt;
}

bool removePeriod(Database& database, HostId host, const RollUp::Key& key) {
    return database.prepare("DELETE FROM periods WHERE host = ? AND length = ? AND start = ?")
        .bind(1, host)
        .bind(2, std::int64_t{secondsIn(key.length).count()})
        .bind(3, secondsOf(key.start))
        .run();
}

std::vector<RollUp::Key> periodsBefore(
    Database& database, HostId host, PeriodLength length, HistoryTime start) {
    std::vector<RollUp::Key> keys;
    Statement statement =
        database.prepare("SELECT start FROM periods WHERE host = ? AND length = ? AND start < ?");
    statement.bind(1, host).bind(2, std::int64_t{secondsIn(length).count()}).bind(3, secondsOf(start));
    while (statement.step()) {
        keys.push_back({.start = timeOf(statement.number(0)), .length = length});
    }
    return keys;
}

std::vector<Period> readPeriods(Database& database, HostId host, const Span& span) {
    std::vector<Period> periods;
    for (const PeriodLength length : allPeriodLengths) {
        Statement statement = database.prepare(
            "SELECT " + std::string(periodColumns)
            + " FROM periods WHERE host = ? AND length = ? AND start > ? AND start < ?");
        statement.bind(1, host)
            .bind(2, std::int64_t{secondsIn(length).count()})
            .bind(3, secondsOf(span.from - secondsIn(length)))
            .bind(4, secondsOf(span.to));
        while (statement.step()) {
            if (auto period = periodIn(statement)) {
                periods.push_back(*std::move(period));
            }
        }
    }
    std::ranges::sort(periods, {}, &Period::start);
    return periods;
}

bool putEpisode(Database& database, HostId host, const Episode& episode) {
    Statement statement = database.prepare("INSERT OR REPLACE INTO episodes (host, kind, start, end, "
                                           "address, interface, lost, blame, likelihood,"
                                           " evidence) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    statement.bind(1, host)
        .bind(2, nameOf(episode.kind))
        .bind(3, secondsOf(episode.start))
        .bind(5, episode.address)
        .bind(6, episode.interface)
        .bind(7, episode.pingsLost);
    if (episode.end) {
        statement.bind(4, secondsOf(*episode.end));
    }
    bindVerdict(statement, 8, episode.verdict);
    return statement.run();
}

std::vector<Episode> readEpisodes(Database& database, HostId host, const Span& span) {
    std::vector<Episode> episodes;
    Statement statement = database.prepare(
        "SELECT kind, start, end, address, interface, lost, blame, likelihood, evidence FROM episodes"
        " WHERE host = ? AND start < ? AND (end IS NULL OR end > ?) ORDER BY start");
    statement.bind(1, host).bind(2, secondsOf(span.to)).bind(3, secondsOf(span.from));
    while (statement.step()) {
        const bool isOutage = statement.text(0) == nameOf(Episode::Kind::outage);
        episodes.push_back({
            .kind = isOutage ? Episode::Kind::outage : Episode::Kind::degradation,
            .start = timeOf(statement.number(1)),
            .end = statement.isNull(2) ? std::nullopt : std::optional(timeOf(statement.number(2))),
            .verdict = verdictIn(statement, 6),
            .address = statement.text(3),
            .interface = statement.text(4),
            .pingsLost = statement.number(5),
        });
    }
    return episodes;
}

bool endOpenEpisodes(Database& database, HistoryTime end) {
    return database.prepare("UPDATE episodes SET end = max(start, ?) WHERE end IS NULL")
        .bind(1, secondsOf(end))
        .run();
}

bool putGap(Database& database, const Gap& gap) {
    return database.prepare("INSERT OR REPLACE INTO gaps (kind, start, end) VALUES (?, ?, ?)")
        .bind(1, nameOf(gap.kind))
        .bind(2, secondsOf(gap.span.from))
        .bind(3, secondsOf(gap.span.to))
        .run();
}

std::vector<Gap> readGaps(Database& database, const Span& span) {
    std::vector<Gap> gaps;
    Statement statement =
        database.prepare("SELECT kind, start, end FROM gaps WHERE start < ? AND end > ? ORDER BY start");
    statement.bind(1, secondsOf(span.to)).bind(2, secondsOf(span.from));
    while (statement.step()) {
        gaps.push_back({
            .kind = gapNamed(statement.text(0)),
            .span = {.from = timeOf(statement.number(1)), .to = timeOf(statement.number(2))},
        });
    }
    return gaps;
}

bool putUntil(Database& database, HistoryTime until) {
    return database.prepare("INSERT OR REPLACE INTO recording (id, until) VALUES (0, ?)")
        .bind(1, secondsOf(until))
        .run();
}

std::optional<HistoryTime> readUntil(Database& database) {
    const auto seconds = database.number("SELECT until FROM recording");
    return seconds ? std::optional(timeOf(*seconds)) : std::nullopt;
}

History readHistory(Database& database, const std::string& host, const Span& span) {
    // All of one moment, while another process writes.
    database.execute("BEGIN");
    History history{.gaps = readGaps(database, span)};
    if (const auto id = findHost(database, host)) {
        history.periods = readPeriods(database, *id, span);
        history.episodes = readEpisodes(database, *id, span);
    }
    history.until = readUntil(database).value_or(HistoryTime{});
    database.execute("COMMIT");
    return history;
}

} // namespace tarnwick::JournalRows
