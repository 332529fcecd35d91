// In which words the portal is asked, from inside a sandbox.
#include "tests/platform/bus/NotificationDrivers.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <optional>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class NotificationPortalTest : public BusTest {
protected:
    using Hint = Hints::mapped_type;

    void addPortal(std::uint32_t version = 2) { portal_.emplace(addPeer(), version); }

    void removePortal() {
        portal_.reset();
        peers_.clear();
    }

    [[nodiscard]] bool runUntilAbilityIs(Ability ability) {
        return runUntil([this, ability] { return center_.canNotify() == ability; });
    }

    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return runUntil([this, count] { return portal_->shown().size() == count; });
    }

    std::optional<FakeNotificationPortal> portal_;
    DesktopNotificationCenter center_{loop_, bus_, DesktopNotificationCenter::Surroundings::sandbox};
};

} // namespace

TEST_F(NotificationPortalTest, IsGivenTheTextsAndTheUsualSound) {
    addPortal();

    center_.post("Connection down", "1 < 2 & 3");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(
        portal_->shown().front().content,
        UnorderedElementsAre(
            Pair("title", Hint("Connection down")), Pair("body", Hint("1 < 2 & 3")),
            Pair("priority", Hint("normal")), Pair("sound", Hint("default"))));
}

TEST_F(NotificationPortalTest, OfTheFirstVersionIsGivenNoSound) {
    addPortal(1);

    center_.post("title", "body");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_THAT(
        portal_->shown().front().content,
        UnorderedElementsAre(
            Pair("title", Hint("title")), Pair("body", Hint("body")), Pair("priority", Hint("normal"))));
}

TEST_F(NotificationPortalTest, IsAskedForItsVersionWhenItComesBack) {
    addPortal(1);
    center_.post("first", "");
    ASSERT_TRUE(runUntilShown(1));
    removePortal();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));

    addPortal(2);

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    center_.post("second", "");
    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(portal_->shown().front().title, "second");
    EXPECT_TRUE(portal_->shown().front().content.contains("sound"));
}

TEST_F(NotificationPortalTest, GetsAnIdOfItsOwnForEachNotification) {
    addPortal();

    center_.post("down", "");
    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal_->shown().front().id, portal_->shown().back().id);
}

TEST_F(NotificationPortalTest, GetsOtherIdsFromTheNextRun) {
    addPortal();
    center_.post("down", "");
    ASSERT_TRUE(runUntilShown(1));
    DesktopNotificationCenter next(loop_, bus_, DesktopNotificationCenter::Surroundings::sandbox);

    next.post("down", "");

    ASSERT_TRUE(runUntilShown(2));
    EXPECT_NE(portal_->shown().front().id, portal_->shown().back().id);
}

TEST_F(NotificationPortalTest, LeavesTheDaemonAlone) {
    addPortal();
    const FakeNotificationDaemon service(addPeer());

    center_.post("down", "");

    ASSERT_TRUE(runUntilShown(1));
    EXPECT_EQ(service.questions(), 0);
    EXPECT_THAT(service.shown(), IsEmpty());
}

} // namespace tarnwick
