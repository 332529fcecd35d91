// The interval stays in range, whatever is stored or typed.
#include "core/PingIntervalSetting.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <string>

namespace tarnwick {
namespace {

bool isInRange(int seconds) {
    return seconds >= PingIntervalSetting::range.lowest && seconds <= PingIntervalSetting::range.highest;
}

TEST(PingIntervalProperty, IsInRangeForEveryNumber) {
    EXPECT_TRUE(rc::check(
        "any number", [](double seconds) { RC_ASSERT(isInRange(PingIntervalSetting::clamped(seconds))); }));
}

TEST(PingIntervalProperty, IsInRangeForEveryTextThatIsANumber) {
    EXPECT_TRUE(rc::check("any text", [] {
        const auto text = *rc::gen::container<std::string>(
            rc::gen::element('0', '1', '9', '.', '-', '+', 'e', 'x', ' ', '\n', 'n', 'a', 'i', 'f', '\0'));
        const std::optional<int> parsed = PingIntervalSetting::parse(text);
        RC_ASSERT(!parsed || isInRange(*parsed));
    }));
}

TEST(PingIntervalProperty, IsTheWholeNumberThatWasTyped) {
    EXPECT_TRUE(rc::check("whole numbers", [](int typed) {
        RC_ASSERT(PingIntervalSetting::parse(" " + std::to_string(typed) + "\n") == std::clamp(typed, 1, 60));
    }));
}

} // namespace
} // namespace tarnwick
