// Whether a process may ping by the kernel's setting, and the command that changes the setting.
#include "platform/linux/PingPermission.h"

#include "core/FileDescriptor.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <regex>
#include <sys/socket.h>

namespace tarnwick {

namespace {

struct Permission {
    std::string name;
    std::string range;
    std::vector<std::uint32_t> groups;
    std::optional<std::string> newRange; ///< that the command sets; none when nothing is missing
};

class PingPermissionTest : public testing::TestWithParam<Permission> {};

} // namespace

TEST_P(PingPermissionTest, AsksForNoMoreThanThisUserNeeds) {
    const Permission& given = GetParam();

    const auto command = PingPermission::grantingCommand(given.range, given.groups);

    const auto expected =
        given.newRange ? std::optional("sudo sysctl -w net.ipv4.ping_group_range=\"" + *given.newRange + "\"")
                       : std::nullopt;
    EXPECT_EQ(command, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, PingPermissionTest,
    testing::Values(
        Permission{"ClosedIsOpenedForTheOwnGroup", "1\t0\n", {1000}, "1000 1000"},
        Permission{"ClosedIsOpenedForRootsGroup", "1\t0\n", {0}, "0 0"},
        Permission{"OpenToAllGroupsMissesNothing", "0\t2147483647\n", {1000}, std::nullopt},
        Permission{"TheLowestGroupIsInside", "1000\t2000\n", {1000}, std::nullopt},
        Permission{"TheHighestGroupIsInside", "1000\t2000\n", {2000}, std::nullopt},
        Permission{"AnotherGroupOfTheProcessIsEnough", "27\t27\n", {1000, 24, 27}, std::nullopt},
        Permission{"WidenedDownward", "1000\t2000\n", {999}, "999 2000"},
        Permission{"WidenedUpward", "1000\t2000\n", {2001, 5}, "1000 2001"},
        Permission{"AnUnreadableSettingTellsNothing", "", {1000}, std::nullopt},
        Permission{"HalfASettingTellsNothing", "1000\n", {1000}, std::nullopt},
        Permission{"WordsTellNothing", "no numbers", {1000}, std::nullopt}),
    [](const auto& test) { return test.param.name; });

TEST(PingPermission, TheKeepingCommandSetsTheRangeNowAndForLaterBoots) {
    const test::TemporaryFolder folder;
    const std::string setting = folder.path() / "a setting";
    const std::string keptIn = folder.path() / "$(kept) 'in'.conf";
    const std::vector<std::string> words =
        PingPermission::keepingCommand({.lowest = 7, .highest = 4294967295}, setting, keptIn);
    std::string command = "exec";
    for (const std::string& word : words) {
        command += " '" + std::regex_replace(word, std::regex("'"), R"('\'')") + "'";
    }

    ASSERT_EQ(std::system(command.c_str()), 0);

    EXPECT_EQ(test::contentOf(setting), "7 4294967295");
    EXPECT_EQ(test::contentOf(keptIn), "# Lets Tarnwick ping.\nnet.ipv4.ping_group_range = 7 4294967295\n");
}

TEST(PingPermission, OfThisProcessAgreesWithTheKernel) {
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_ICMP));
    const bool isRefused = !socket.isOpen() && errno == EACCES;

    EXPECT_EQ(PingPermission::grantingCommand().has_value(), isRefused);
}

} // namespace tarnwick
