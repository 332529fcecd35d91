// The ledger beside a second one that keeps every ping's own history and counts it anew each time.
#include "core/PingLedger.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarnwick {
namespace {

enum class Outcome { waiting, forgotten, replied, lost };

struct History {
    std::uint64_t id;
    int session; ///< number of the session in which it was sent
    int site;
    Outcome outcome = Outcome::waiting;
    double ms = 0;
};

/// Nothing is ever reset in here: the figures of a counter are those of the pings sent since its last reset.
class PlainLedger {
public:
    void sent(std::uint64_t id) {
        settle(id, Outcome::forgotten, 0); // an older booking of that id is replaced
        pings_.push_back({id, session, site});
    }

    void settle(std::uint64_t id, Outcome outcome, double ms) {
        for (History& ping : pings_) {
            if (ping.id == id && ping.outcome == Outcome::waiting) {
                ping.outcome = outcome;
                ping.ms = ms;
                settled_.push_back(ping);
            }
        }
    }

    void retain(const std::unordered_set<std::uint64_t>& ids) {
        for (History& ping : pings_) {
            if (ping.outcome == Outcome::waiting && !ids.contains(ping.id)) {
                ping.outcome = Outcome::forgotten;
            }
        }
    }

    [[nodiscard]] StatCounter counter(int History::* epoch, int current) const {
        StatCounter figures;
        double sum = 0;
        for (const History& ping : pings_) {
            figures.sent += ping.*epoch == current ? 1 : 0;
        }
        // In the order of settling, because a fastest of 0 ms is replaced by the next reply.
        for (const History& ping : settled_) {
            if (ping.*epoch != current) {
                continue;
            }
            figures.lost += ping.outcome == Outcome::lost ? 1 : 0;
            if (ping.outcome == Outcome::replied) {
                ++figures.replied;
                sum += ping.ms;
                figures.slowestMs = std::max(figures.slowestMs, ping.ms);
                figures.fastestMs = figures.fastestMs == 0 ? ping.ms : std::min(figures.fastestMs, ping.ms);
            }
        }
        figures.averageMs = figures.replied > 0 ? sum / static_cast<double>(figures.replied) : 0;
        return figures;
    }

    int session = 0;
    int site = 0;

private:
    std::vector<History> pings_;
    std::vector<History> settled_;
};

void expectSame(StatCounter actual, StatCounter expected) {
    RC_ASSERT(std::abs(actual.averageMs - expected.averageMs) < 1e-6);
    actual.averageMs = expected.averageMs = 0;
    RC_ASSERT(actual == expected);
}

void expectPlausible(const StatCounter& counter) {
    RC_ASSERT(counter.replied + counter.lost <= counter.sent);
    RC_ASSERT(counter.lossPercent() >= 0 && counter.lossPercent() <= 100);
    RC_ASSERT(counter.averageMs <= counter.slowestMs + 1e-6);
}

std::uint64_t anyId() {
    return *rc::gen::inRange<std::uint64_t>(0, 12);
}

void replyHappens(PingLedger& ledger, PlainLedger& plain) {
    const std::uint64_t id = anyId();
    const double ms = *rc::gen::inRange(0, 24'000) * 0.25;
    const bool withinTimeout = ms <= 4000;
    ledger.replied(id, ms, withinTimeout);
    plain.settle(id, withinTimeout ? Outcome::replied : Outcome::lost, withinTimeout ? ms : 0);
}

void sendHappens(PingLedger& ledger, PlainLedger& plain) {
    const std::uint64_t id = anyId();
    const bool counted = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
    ledger.sent(id, counted);
    if (counted) {
        plain.sent(id);
    }
}

void lossHappens(PingLedger& ledger, PlainLedger& plain) {
    const std::uint64_t id = anyId();
    ledger.lost(id);
    plain.settle(id, Outcome::lost, 0);
}

void somethingRareHappens(PingLedger& ledger, PlainLedger& plain) {
    switch (*rc::gen::inRange(0, 3)) {
    case 0:
        ledger.resetSession();
        ++plain.session;
        break;
    case 1:
        ledger.resetSite({});
        ++plain.site;
        break;
    default:
        std::unordered_set<std::uint64_t> kept;
        for (int number = 0; number < 6; ++number) {
            kept.insert(anyId());
        }
        ledger.retain(kept);
        plain.retain(kept);
    }
}

TEST(PingLedgerProperty, HasTheFiguresOfThePingsSentSinceTheReset) {
    EXPECT_TRUE(rc::check("any sequence", [] {
        PingLedger ledger;
        PlainLedger plain;
        const int steps = *rc::gen::inRange(0, 200);
        for (int step = 0; step < steps; ++step) {
            const int kind = *rc::gen::inRange(0, 20);
            if (kind < 9) {
                sendHappens(ledger, plain);
            } else if (kind < 14) {
                replyHappens(ledger, plain);
            } else if (kind < 18) {
                lossHappens(ledger, plain);
            } else {
                somethingRareHappens(ledger, plain);
            }
            expectSame(ledger.session(), plain.counter(&History::session, plain.session));
            expectSame(ledger.site(), plain.counter(&History::site, plain.site));
            expectPlausible(ledger.session());
            expectPlausible(ledger.site());
        }
    }));
}

} // namespace
} // namespace tarnwick
