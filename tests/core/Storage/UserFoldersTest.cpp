// Where a user's files lie.
#include "core/Storage/UserFolders.h"

#include "core/Storage/StatsStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <string>

namespace {

/// The account that the user database has for each user, if any.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): a C function reads it
std::optional<passwd> presentUser;

} // namespace

// In place of that of the C library.
extern "C" passwd* getpwuid(uid_t /*user*/) {
    return presentUser ? &*presentUser : nullptr;
}

namespace tarnwick {
namespace {

/// Each case runs with these alone of the variables that matter.
class UserFoldersTest : public testing::Test {
protected:
    UserFoldersTest() {
        ::setenv("HOME", "/home/user", 1);
        ::unsetenv("XDG_DATA_HOME");
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_CONFIG_DIRS");
        ::unsetenv("XDG_STATE_HOME");
        presentUser.reset();
    }
};

TEST_F(UserFoldersTest, AreTheUsualOnesInTheHomeFolder) {
    EXPECT_EQ(UserFolders::data(), "/home/user/.local/share");
    EXPECT_EQ(UserFolders::config(), "/home/user/.config");
    EXPECT_EQ(UserFolders::state(), "/home/user/.local/state");
}

TEST_F(UserFoldersTest, AreTheOnesThatTheEnvironmentNames) {
    ::setenv("XDG_DATA_HOME", "/srv/data", 1);
    ::setenv("XDG_CONFIG_HOME", "/srv/config", 1);
    EXPECT_EQ(UserFolders::data(), "/srv/data");
    EXPECT_EQ(UserFolders::config(), "/srv/config");
    ::setenv("XDG_STATE_HOME", "/srv/state", 1);
    EXPECT_EQ(UserFolders::state(), "/srv/state");
}

TEST_F(UserFoldersTest, IgnoreRelativeAndEmptyNames) {
    ::setenv("XDG_DATA_HOME", "data", 1);
    ::setenv("XDG_CONFIG_HOME", "", 1);
    EXPECT_EQ(UserFolders::data(), "/home/user/.local/share");
    EXPECT_EQ(UserFolders::config(), "/home/user/.config");
}

TEST_F(UserFoldersTest, WithoutAHomeInTheEnvironmentAreInTheOneOfTheAccount) {
    ::unsetenv("HOME");
    std::string home = "/home/listed";
    presentUser.emplace().pw_dir = home.data();
    EXPECT_EQ(UserFolders::config(), "/home/listed/.config");
}

TEST_F(UserFoldersTest, AreAbsoluteWithoutAnyHome) {
    ::unsetenv("HOME");
    std::string empty;
    EXPECT_EQ(UserFolders::config(), "/.config");
    presentUser.emplace().pw_dir = nullptr;
    EXPECT_EQ(UserFolders::config(), "/.config");
    presentUser->pw_dir = empty.data();
    EXPECT_EQ(UserFolders::config(), "/.config");
}

TEST_F(UserFoldersTest, OfAllUsersAreInTheOrderThatTheEnvironmentGives) {
    ::setenv("XDG_CONFIG_DIRS", "/srv/first:/srv/second", 1);
    EXPECT_THAT(UserFolders::systemConfig(), testing::ElementsAre("/srv/first", "/srv/second"));
}

TEST_F(UserFoldersTest, OfAllUsersAreTheUsualOneWhenTheEnvironmentNamesNone) {
    EXPECT_THAT(UserFolders::systemConfig(), testing::ElementsAre("/etc/xdg"));
    ::setenv("XDG_CONFIG_DIRS", "", 1);
    EXPECT_THAT(UserFolders::systemConfig(), testing::ElementsAre("/etc/xdg"));
}

TEST_F(UserFoldersTest, DataOfAllUsersIsWhereTheEnvironmentSaysOrInTheUsualFolders) {
    ::setenv("XDG_DATA_DIRS", "/srv/first:/srv/second", 1);
    EXPECT_THAT(UserFolders::systemData(), testing::ElementsAre("/srv/first", "/srv/second"));
    ::unsetenv("XDG_DATA_DIRS");
    EXPECT_THAT(UserFolders::systemData(), testing::ElementsAre("/usr/local/share", "/usr/share"));
}

TEST_F(UserFoldersTest, OfAllUsersHoldNoRelativeOrEmptyNames) {
    ::setenv("XDG_CONFIG_DIRS", ":first:/srv/second::", 1);
    EXPECT_THAT(UserFolders::systemConfig(), testing::ElementsAre("/srv/second"));
}

TEST_F(UserFoldersTest, AreShownFromTheHomeFolderOn) {
    EXPECT_EQ(UserFolders::shown(UserFolders::state()), "~/.local/state");
    EXPECT_EQ(UserFolders::shown("/home/username/x"), "/home/username/x");
    EXPECT_EQ(UserFolders::shown("/srv/state"), "/srv/state");
    ::setenv("HOME", "/home/user/", 1);
    EXPECT_EQ(UserFolders::shown("/home/user/.local/state"), "~/.local/state");
    ::setenv("HOME", "/", 1);
    EXPECT_EQ(UserFolders::shown("/.local/state"), "/.local/state");
}

TEST_F(UserFoldersTest, HoldTheStatisticsInTheProductsOwnFolder) {
    ::setenv("XDG_DATA_HOME", "/srv/data", 1);
    EXPECT_EQ(StatsStore::supportDirectory(), "/srv/data");
    EXPECT_EQ(StatsStore::defaultStore().url, "/srv/data/Tarnwick/stats.json");
}

} // namespace
} // namespace tarnwick
