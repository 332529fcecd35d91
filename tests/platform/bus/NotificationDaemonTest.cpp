// In which words the notification daemon is asked.
#include "tests/platform/bus/NotificationDrivers.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using Ability = NotificationCenter::Ability;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class NotificationDaemonTest : public BusTest {
protected:
    void addDaemon(std::vector<std::string> capabilities = {"body"}) {
        service_.emplace(addPeer(), std::move(capabilities));
    }

    void removeDaemon() {
        service_.reset();
        peers_.clear();
    }

    static void addIcon(const std::filesystem::path& iconFolder) {
        const std::filesystem::path folder = iconFolder / "hicolor/scalable/apps";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "org.tarnwick.tarnwick.svg") << "<svg/>";
    }

    [[nodiscard]] bool runUntilAbilityIs(Ability ability) {
        return runUntil([this, ability] { return center_.canNotify() == ability; });
    }

    /// The one that a new daemon shows.
    [[nodiscard]] FakeNotificationDaemon::Notification shown() {
        const bool isShown = runUntil([this] { return service_->shown().size() == 1; });
        return isShown ? service_->shown().front() : FakeNotificationDaemon::Notification();
    }

    std::optional<FakeNotificationDaemon> service_;
    test::TemporaryFolder icons_;
    DesktopNotificationCenter center_{
        loop_, bus_, DesktopNotificationCenter::Surroundings::desktop, icons_.path()};
};

} // namespace

TEST_F(NotificationDaemonTest, IsGivenEverythingThatItShows) {
    addDaemon();

    center_.post("Connection down", "Nothing answers.");

    const FakeNotificationDaemon::Notification notification = shown();
    EXPECT_EQ(notification.application, "Tarnwick");
    EXPECT_EQ(notification.replaces, 0U);
    EXPECT_EQ(notification.icon, "org.tarnwick.tarnwick");
    EXPECT_EQ(notification.title, "Connection down");
    EXPECT_EQ(notification.body, "Nothing answers.");
    EXPECT_THAT(notification.actions, IsEmpty());
    EXPECT_EQ(notification.expires, -1);
    using Hint = Hints::mapped_type;
    EXPECT_THAT(
        notification.hints,
        UnorderedElementsAre(
            Pair("desktop-entry", Hint("org.tarnwick.tarnwick")),
            Pair("sound-name", Hint("message-new-instant")), Pair("urgency", Hint(std::uint8_t{1}))));
}

TEST_F(NotificationDaemonTest, ReplacesNoEarlierNotification) {
    addDaemon();

    center_.post("down", "");
    center_.post("up", "");

    ASSERT_TRUE(runUntil([this] { return service_->shown().size() == 2; }));
    EXPECT_EQ(service_->shown().back().replaces, 0U);
}

TEST_F(NotificationDaemonTest, GetsTheProgramsOwnIconAsAFile) {
    addIcon(icons_.path());
    addDaemon();

    center_.post("title", "");

    EXPECT_EQ(
        shown().icon,
        "file://" + (icons_.path() / "hicolor/scalable/apps/org.tarnwick.tarnwick.svg").string());
}

TEST_F(NotificationDaemonTest, GetsAUriOfAnIconInAFolderOfAnyName) {
    const std::filesystem::path folder = icons_.path() / "50% \xc3\xa9 #?";
    addIcon(folder);
    addDaemon();
    DesktopNotificationCenter center(loop_, bus_, DesktopNotificationCenter::Surroundings::desktop, folder);

    center.post("title", "");

    EXPECT_EQ(
        shown().icon, "file://" + icons_.path().string()
                          + "/50%25%20%C3%A9%20%23%3F/hicolor/scalable/apps/org.tarnwick.tarnwick.svg");
}

TEST_F(NotificationDaemonTest, GetsTheThemesIconWhenTheFileHasGone) {
    addIcon(icons_.path());
    addDaemon();
    std::filesystem::remove_all(icons_.path() / "hicolor");

    center_.post("title", "");

    EXPECT_EQ(shown().icon, "org.tarnwick.tarnwick");
}

TEST_F(NotificationDaemonTest, GetsAnEscapedBodyWhenItReadsMarkup) {
    addDaemon({"body", "body-markup"});

    center_.post("a < b & c", "1 < 2 & 3 > 2 \"quoted\"");

    EXPECT_EQ(shown().body, "1 &lt; 2 &amp; 3 &gt; 2 \"quoted\"");
    // Titles are never markup.
    EXPECT_EQ(shown().title, "a < b & c");
}

TEST_F(NotificationDaemonTest, GetsThePlainBodyWhenItReadsNoMarkup) {
    addDaemon({"body"});

    center_.post("title", "1 < 2 & 3");

    EXPECT_EQ(shown().body, "1 < 2 & 3");
}

TEST_F(NotificationDaemonTest, IsAskedWhatItReadsWhenItIsANewOne) {
    addDaemon({"body", "body-markup"});
    center_.post("first", "&");
    EXPECT_EQ(shown().body, "&amp;");
    removeDaemon();
    ASSERT_TRUE(runUntilAbilityIs(Ability::unknown));

    addDaemon({"body"});

    ASSERT_TRUE(runUntilAbilityIs(Ability::yes));
    center_.post("second", "&");
    EXPECT_EQ(shown().body, "&");
}

} // namespace tarnwick
