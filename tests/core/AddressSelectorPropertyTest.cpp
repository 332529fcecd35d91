// The choice of address under any sequence of sends, failures and replies.
#include "core/AddressSelector.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

namespace tarnwick {
namespace {

/// Does one random thing to the selector; tells what the selector told.
bool happensTo(AddressSelector& selector, double now) {
    switch (*rc::gen::inRange(0, 4)) {
    case 0:
        return selector.sendFailed();
    case 1:
        return selector.replied(*rc::gen::inRange(-2, 8));
    default:
        return selector.sent(now);
    }
}

TEST(AddressSelectorProperty, StaysInRangeAndTellsEveryMoveAndNoOther) {
    EXPECT_TRUE(rc::check("any sequence", [] {
        AddressSelector selector{.count = *rc::gen::inRange(0, 6), .deadline = *rc::gen::inRange(0, 6) * 0.5};
        double now = 0;
        const int steps = *rc::gen::inRange(0, 100);
        for (int step = 0; step < steps; ++step) {
            now += *rc::gen::inRange(0, 8) * 0.25;
            const int before = selector.index;
            const bool told = happensTo(selector, now);
            RC_ASSERT(told == (selector.index != before));
            RC_ASSERT(selector.index >= 0 && selector.index < std::max(selector.count, 1));
            RC_ASSERT(!told || !selector.waitingSince);
        }
    }));
}

TEST(AddressSelectorProperty, TriesEveryAddressInTurnWhileAllAreSilent) {
    EXPECT_TRUE(rc::check("all silent", [] {
        const int count = *rc::gen::inRange(1, 6);
        AddressSelector selector{.count = count, .deadline = 4};
        double now = 0;
        for (int turn = 1; turn <= 3 * count; ++turn) {
            int sends = 1;
            while (!selector.sent(now) && sends < 20) {
                now += 1;
                ++sends;
            }
            now += 1;
            RC_ASSERT(sends == (count == 1 ? 20 : 5));
            RC_ASSERT(selector.index == turn % count);
        }
    }));
}

} // namespace
} // namespace tarnwick
