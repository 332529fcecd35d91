// Asking the shell for the item's place.
#include "platform/bus/ItemFinder.h"

#include "tests/platform/bus/BusTest.h"

#include "platform/bus/BusObject.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <tuple>

namespace tarnwick {

namespace {

using Place = std::tuple<std::int32_t, std::int32_t>;

/// Plays the shell's extension.
class ItemFinderTest : public BusTest {
protected:
    static constexpr const char* path = "/org/tarnwick/ItemPlace";
    static constexpr const char* name = "org.tarnwick.ItemPlace";

    BusPeer& addShell(const BusOutcome<std::tuple<Place>>& answer) {
        BusPeer& peer = addPeer();
        object_.emplace(peer.link(), path, name);
        object_->method("Find", {}, {"middle"}, [answer] { return answer; });
        EXPECT_TRUE(object_->publish());
        peer.requestName(name);
        return peer;
    }

    /// Whether an answer came.
    [[nodiscard]] bool find() {
        isAnswered_ = false;
        finder_.find([this](std::optional<ScreenPoint> place) {
            isAnswered_ = true;
            place_ = place;
        });
        EXPECT_FALSE(isAnswered_); // not before the call has returned
        return runUntil([this] { return isAnswered_; });
    }

    std::optional<BusObject> object_;
    ItemFinder finder_{bus_};
    bool isAnswered_ = false;
    std::optional<ScreenPoint> place_;
};

} // namespace

TEST_F(ItemFinderTest, TheShellTellsTheMiddleOfTheItem) {
    addShell(std::make_tuple(Place(920, 16)));
    ASSERT_TRUE(runUntilConnected());

    ASSERT_TRUE(find());

    EXPECT_EQ(place_, (ScreenPoint{.x = 920, .y = 16}));
}

TEST_F(ItemFinderTest, AShellThatDoesNotShowItTellsNone) {
    addShell(BusError{.name = "org.tarnwick.Error.NotShown", .text = "no such item"});
    ASSERT_TRUE(runUntilConnected());

    ASSERT_TRUE(find());

    EXPECT_EQ(place_, std::nullopt);
}

TEST_F(ItemFinderTest, WithoutTheExtensionThereIsNoPlace) {
    ASSERT_TRUE(runUntilConnected());

    ASSERT_TRUE(find());

    EXPECT_EQ(place_, std::nullopt);
}

TEST_F(ItemFinderTest, AShellThatHangsIsNotWaitedFor) {
    addShell(std::make_tuple(Place(920, 16)));
    ASSERT_TRUE(runUntilConnected());
    const auto hanging = std::move(peers_.back());
    peers_.pop_back();
    const double start = loop_.now();

    ASSERT_TRUE(find());

    EXPECT_EQ(place_, std::nullopt);
    EXPECT_GE(loop_.now() - start, ItemFinder::patience - 0.01);
}

TEST_F(ItemFinderTest, WithoutABusThereIsNoPlace) {
    stopBus();
    ASSERT_TRUE(runUntilUnavailable());

    ASSERT_TRUE(find());

    EXPECT_EQ(place_, std::nullopt);
}

} // namespace tarnwick
