#include "tests/platform/journal/SomeBatches.h"

namespace tarnwick::test {

HistoryTime minuteNumber(std::int64_t number) {
    constexpr std::chrono::sys_days firstDay{std::chrono::year(2026) / 1 / 1};
    return firstDay + std::chrono::minutes(number);
}

Span minuteSpan(std::int64_t first, std::int64_t count) {
    return {.from = minuteNumber(first), .to = minuteNumber(first + count)};
}

Period minuteOf(std::int64_t number, double ms) {
    Period period{.start = minuteNumber(number)};
    period.figures.watchedSeconds = 60;
    for (period.figures.sent = 0; period.figures.sent < 12; ++period.figures.sent) {
        period.figures.addAnswer(ms);
    }
    return period;
}

Journal::Batch batchOf(std::int64_t number, double ms) {
    return {.host = journalHost, .minutes = {minuteOf(number, ms)}, .until = minuteNumber(number + 1)};
}

History allOf(Journal& journal, const std::string& host) {
    return journal.read(host, {.from = HistoryTime{}, .to = minuteNumber(std::int64_t{60} * 24 * 10'000)});
}

} // namespace tarnwick::test
