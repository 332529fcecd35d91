#include "tests/app/Report/Samples.h"

#include "tests/core/History/SomeHistory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <utility>

namespace tarnwick::test {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// 15:30 by the clock of Central Europe.
const HistoryTime sampleEnd = at("2026-11-23 14:30:00");

/// Numbers that look random, and are the same everywhere.
class Dice {
public:
    explicit Dice(unsigned seed) : engine_(seed) {}

    /// 0 to below 1.
    double share() { return static_cast<double>(engine_() - std::mt19937::min()) / 4294967296.0; }

    std::int64_t upTo(std::int64_t most) {
        return static_cast<std::int64_t>(share() * static_cast<double>(most));
    }

private:
    std::mt19937 engine_;
};

/// How much busier the line is in the evening, 0 to 1.
double evening(HistoryTime time) {
    const auto sinceMidnight = time - std::chrono::floor<days>(time);
    const double hour = std::chrono::duration<double, std::ratio<3600>>(sinceMidnight).count();
    return std::exp(-std::pow((hour - 19.5) / 1.6, 2));
}

struct Habits {
    int pings = 12; ///< in a period
    double busyMs = 6;
    double lossShare = 0; ///< in the busiest hour
};

Period somePeriod(HistoryTime start, PeriodLength length, const Habits& habits, Dice& dice) {
    Period period{.start = start, .length = length};
    period.figures.watchedSeconds = static_cast<double>(secondsIn(length).count());
    const double busy = evening(start);
    for (int ping = 0; ping < habits.pings; ++ping) {
        ++period.figures.sent;
        if (dice.share() < habits.lossShare * busy) {
            ++period.figures.lost;
            continue;
        }
        const double ms = 9 + 4 * dice.share() + habits.busyMs * busy * dice.share();
        period.figures.addAnswer(dice.share() < 0.002 ? ms * 4 : ms);
        period.figures.addDifference(ms / 10);
    }
    return period;
}

bool isIn(const std::vector<Span>& spans, const Span& span) {
    return std::ranges::any_of(spans, [&](const Span& one) { return one.overlaps(span); });
}

/// Asleep from 23:40 to 6:50 by the local clock.
std::vector<Gap> nights(const Span& span) {
    std::vector<Gap> gaps;
    for (HistoryTime day = std::chrono::floor<days>(span.from) - days(1); day < span.to; day += days(1)) {
        const Span night{.from = day + hours(22) + minutes(40), .to = day + hours(29) + minutes(50)};
        if (const Span inside = common(night, span); !inside.isEmpty()) {
            gaps.push_back({.kind = Gap::Kind::asleep, .span = inside});
        }
    }
    return gaps;
}

Verdict someVerdict(Dice& dice) {
    const std::array verdicts{
        Verdict{
            .blame = Blame::provider,
            .likelihood = Likelihood::likely,
            .evidence = "Your router answers in 2 ms; nothing beyond it has answered for 14 s."},
        Verdict{
            .blame = Blame::provider,
            .likelihood = Likelihood::likely,
            .evidence = "The provider's network answers up to 198.51.100.1; nothing beyond it has answered "
                        "for 26 s."},
        Verdict{
            .blame = Blame::beyondProvider,
            .likelihood = Likelihood::possible,
            .evidence = "The provider's network answers up to 198.51.100.7; loss begins after it."},
        Verdict{
            .blame = Blame::wifi,
            .likelihood = Likelihood::likely,
            .evidence = "The Wi-Fi signal is weak (-82 dBm), and the router does not answer."}};
    return verdicts.at(static_cast<std::size_t>(dice.upTo(4)));
}

/// Not while the machine sleeps.
std::vector<Episode> someOutages(const Span& span, int count, const std::vector<Gap>& gaps, Dice& dice) {
    std::vector<Episode> outages;
    HistoryTime time = span.from;
    const seconds step = span.length() / (count + 1);
    for (int index = 0; index < count; ++index) {
        time += step;
        const seconds length(12 + static_cast<std::int64_t>(std::pow(dice.share(), 4) * 1500));
        Span outage{.from = time + seconds(dice.upTo(step.count() / 2)), .to = {}};
        outage.to = outage.from + length;
        for (const Gap& gap : gaps) {
            if (gap.span.overlaps(outage)) {
                outage = {.from = gap.span.to + minutes(dice.upTo(180)), .to = {}};
                outage.to = outage.from + length;
            }
        }
        outages.push_back(
            {.start = outage.from,
             .end = outage.to,
             .verdict = someVerdict(dice),
             .address = "203.0.113.9",
             .interface = "wlp2s0",
             .pingsLost = length.count()});
    }
    std::ranges::sort(outages, {}, &Episode::start);
    return outages;
}

void addPeriods(History& history, const Span& span, PeriodLength length, const Habits& habits, Dice& dice) {
    std::vector<Span> silent;
    for (const Gap& gap : history.gaps) {
        silent.push_back(gap.span);
    }
    for (HistoryTime start = span.from; start < span.to; start += secondsIn(length)) {
        if (!isIn(silent, {.from = start, .to = start + secondsIn(length)})) {
            history.periods.push_back(somePeriod(start, length, habits, dice));
        }
    }
}

History someHistory(const Span& span, int outages, bool sleeps, const Habits& habits, unsigned seed) {
    Dice dice(seed);
    History history{.until = span.to};
    if (sleeps) {
        history.gaps = nights(span);
    }
    history.episodes = someOutages(span, outages, history.gaps, dice);
    const HistoryTime weekAgo = std::max(span.from, span.to - days(7));
    addPeriods(history, {.from = span.from, .to = weekAgo}, PeriodLength::quarterHour, habits, dice);
    addPeriods(history, {.from = weekAgo, .to = span.to}, PeriodLength::minute, habits, dice);
    return history;
}

/// All that can be long is as long as it can be.
Sample terribleWeek() {
    const Span span{.from = sampleEnd - days(7), .to = sampleEnd};
    Sample sample{
        .name = "terrible-week",
        .host = std::string(63, 'w') + "." + std::string(63, 'i') + "." + std::string(63, 'd') + ".example",
        .history = someHistory(span, 200, true, {.busyMs = 900, .lossShare = 0.3}, 2),
        .wanted = span};
    for (Episode& episode : sample.history.episodes) {
        episode.address = "2001:db8:ffff:ffff:ffff:ffff:ffff:ffff";
        episode.interface = "wlx00c0caabcdef";
        episode.verdict = Verdict{
            .blame = Blame::beyondProvider,
            .likelihood = Likelihood::possible,
            .evidence =
                "The provider's network answers up to 2001:db8:ffff:ffff:ffff:ffff:ffff:ffff; loss begins "
                "after it, at 2001:db8:eeee:eeee:eeee:eeee:eeee:eeee and beyond."};
    }
    sample.history.episodes.back().end.reset();
    return sample;
}

Sample ordinary(const std::string& name, const Span& span, int outages, bool sleeps, const Habits& habits) {
    return {
        .name = name,
        .host = "one.example",
        .history = someHistory(span, outages, sleeps, habits, 1),
        .wanted = span};
}

} // namespace

std::vector<Sample> samples() {
    const auto last = [](seconds length) { return Span{.from = sampleEnd - length, .to = sampleEnd}; };
    const Habits bad{.pings = 60, .busyMs = 70, .lossShare = 0.03};
    return {
        ordinary("quiet-week", last(days(7)), 0, false, {}),
        ordinary("bad-week", last(days(7)), 9, true, bad),
        terribleWeek(),
        ordinary("one-day", last(days(1)), 2, false, bad),
        ordinary("ten-minutes", last(minutes(10)), 1, false, {}),
        ordinary("ninety-days", last(days(90)), 60, true, {.pings = 60, .busyMs = 40, .lossShare = 0.01}),
        ordinary("two-years", last(days(730)), 400, true, {}),
        {.name = "empty", .host = "one.example", .history = {}, .wanted = last(days(7))},
    };
}

} // namespace tarnwick::test
