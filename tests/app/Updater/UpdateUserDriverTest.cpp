// What the update window asks before it shows itself, without a display, in virtual time.
#include "app/Updater/UpdateUserDriver.h"
#include "tests/app/Update/UpdateWorld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

/// Notes what it is asked and told.
class NotingDelegate final : public UserDriverDelegate {
public:
    bool isGentle = true;
    bool handles = true;
    mutable std::vector<std::string> calls;

    [[nodiscard]] bool supportsGentleScheduledUpdateReminders() const override { return isGentle; }

    [[nodiscard]] bool standardUserDriverShouldHandleShowingScheduledUpdate(
        const FoundUpdate& update, bool /*inImmediateFocus*/) override {
        calls.push_back("should show " + update.release.version.text());
        return handles;
    }

    void standardUserDriverWillHandleShowingUpdate(
        bool handleShowingUpdate, const FoundUpdate& update, bool isUserInitiated) override {
        calls.push_back(
            std::string(handleShowingUpdate ? "will show " : "will leave ") + update.release.version.text()
            + (isUserInitiated ? " to the user's check" : " by itself"));
    }

    void standardUserDriverWillShowModalAlert() override { calls.emplace_back("alert"); }
};

class UpdateUserDriverTest : public UpdateWorld {
protected:
    NotingDelegate delegate_;
    UpdateUserDriver driver_{
        {.loop = loop,
         .engine = engine(),
         .delegate = delegate_,
         .icon = [] { return QIcon(); },
         .furnish = nullptr,
         .restart = nullptr}};
};

TEST_F(UpdateUserDriverTest, AsksBeforeItShowsWhatAScheduledCheckHasFound) {
    engine().start();
    loop.advance(day);

    EXPECT_THAT(delegate_.calls, ElementsAre("should show 1.1", "will show 1.1 by itself"));
    EXPECT_NE(driver_.window(), nullptr);
}

TEST_F(UpdateUserDriverTest, LeavesItToAProgramThatShowsItInItsOwnWay) {
    delegate_.handles = false;
    engine().start();
    loop.advance(day);

    EXPECT_THAT(delegate_.calls, ElementsAre("should show 1.1", "will leave 1.1 by itself"));
    EXPECT_EQ(driver_.window(), nullptr);
}

TEST_F(UpdateUserDriverTest, DoesNotAskAProgramThatHasNoWayOfItsOwn) {
    delegate_.isGentle = false;
    delegate_.handles = false;
    engine().start();
    loop.advance(day);

    EXPECT_THAT(delegate_.calls, ElementsAre("will show 1.1 by itself"));
    EXPECT_NE(driver_.window(), nullptr);
}

TEST_F(UpdateUserDriverTest, ShowsWhatTheUserHasAskedForWithoutAsking) {
    delegate_.handles = false;
    check();

    EXPECT_THAT(delegate_.calls, ElementsAre("will show 1.1 to the user's check"));
    EXPECT_NE(driver_.window(), nullptr);
}

TEST_F(UpdateUserDriverTest, TellsOfAnAlert) {
    publish("1.0");
    check();

    EXPECT_THAT(delegate_.calls, ElementsAre("alert"));
}

} // namespace
} // namespace tarnwick::test
