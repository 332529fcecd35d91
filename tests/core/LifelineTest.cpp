// Callbacks that outlive their owner.
#include "core/Lifeline.h"

#include <gtest/gtest.h>

#include <optional>

namespace tarnwick {

TEST(Lifeline, GuardsACallbackUntilItsOwnerIsGone) {
    int sum = 0;
    std::optional<Lifeline> owner(std::in_place);
    const auto callback = owner->guarded([&sum](int value) { sum += value; });
    callback(1);

    owner.reset();
    callback(10);

    EXPECT_EQ(sum, 1);
}

TEST(Lifeline, TellsAWatchThatItsOwnerIsGone) {
    std::optional<Lifeline> owner(std::in_place);
    const Lifeline::Watch watch = owner->watch();
    EXPECT_FALSE(watch.hasEnded());

    owner.reset();

    EXPECT_TRUE(watch.hasEnded());
}

} // namespace tarnwick
