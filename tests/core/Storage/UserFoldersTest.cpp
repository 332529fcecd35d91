// Where a user's files lie.
#include "core/Storage/UserFolders.h"

#include "core/Storage/StatsStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tarnwick {
namespace {

/// Each case runs with these alone of the variables that matter.
class UserFoldersTest : public testing::Test {
protected:
    UserFoldersTest() {
        ::setenv("HOME", "/home/somebody", 1);
        ::unsetenv("XDG_DATA_HOME");
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_CONFIG_DIRS");
    }
};

TEST_F(UserFoldersTest, AreTheUsualOnesInTheHomeFolder) {
    EXPECT_EQ(UserFolders::data(), "/home/somebody/.local/share");
    EXPECT_EQ(UserFolders::config(), "/home/somebody/.config");
}

TEST_F(UserFoldersTest, AreTheOnesThatTheEnvironmentNames) {
    ::setenv("XDG_DATA_HOME", "/srv/data", 1);
    ::setenv("XDG_CONFIG_HOME", "/srv/config", 1);
    EXPECT_EQ(UserFolders::data(), "/srv/data");
    EXPECT_EQ(UserFolders::config(), "/srv/config");
}

TEST_F(UserFoldersTest, IgnoreRelativeAndEmptyNames) {
    ::setenv("XDG_DATA_HOME", "data", 1);
    ::setenv("XDG_CONFIG_HOME", "", 1);
    EXPECT_EQ(UserFolders::data(), "/home/somebody/.local/share");
    EXPECT_EQ(UserFolders::config(), "/home/somebody/.config");
}

TEST_F(UserFoldersTest, WithoutAHomeInTheEnvironmentAreInTheOneOfTheAccount) {
    ::unsetenv("HOME");
    const passwd* const account = ::getpwuid(::getuid());
    ASSERT_NE(account, nullptr);
    EXPECT_EQ(UserFolders::config(), std::filesystem::path(account->pw_dir) / ".config");
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

TEST_F(UserFoldersTest, OfAllUsersHoldNoRelativeOrEmptyNames) {
    ::setenv("XDG_CONFIG_DIRS", ":first:/srv/second::", 1);
    EXPECT_THAT(UserFolders::systemConfig(), testing::ElementsAre("/srv/second"));
}

TEST_F(UserFoldersTest, HoldTheStatisticsInTheProductsOwnFolder) {
    ::setenv("XDG_DATA_HOME", "/srv/data", 1);
    EXPECT_EQ(StatsStore::supportDirectory(), "/srv/data");
    EXPECT_EQ(StatsStore::defaultStore().url, "/srv/data/Tarnwick/stats.json");
}

} // namespace
} // namespace tarnwick
