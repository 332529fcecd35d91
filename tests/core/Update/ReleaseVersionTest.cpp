// Which texts are versions, and which of two is newer.
#include "core/Update/ReleaseVersion.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

ReleaseVersion version(const char* text) {
    return ReleaseVersion::parse(text).value();
}

class VersionText : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    ReleaseVersion, VersionText,
    testing::Values("0", "7", "1.2", "0.1.0", "1.10.3", "1.2.3.4", "999999.999999.999999.999999"));

TEST_P(VersionText, IsKeptAsItIs) {
    const auto parsed = ReleaseVersion::parse(GetParam());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->text(), GetParam());
}

class NoVersionText : public testing::TestWithParam<std::string_view> {};

INSTANTIATE_TEST_SUITE_P(
    ReleaseVersion, NoVersionText,
    testing::Values(
        "", ".", "1.", ".1", "1..2", "v1.2", "1.2-rc1", "1.2b", " 1.2", "1.2 ", "1,2", "-1", "+1", "1.-2",
        "1.+2", "01.2", "1.02", "1.00", "1.2.3.4.5", "1.2.3.4.", "1000000", "1.4294967296",
        "99999999999999999999", "0x1", "1.2\n", std::string_view("1.2\0", 4), "١.٢"));

TEST_P(NoVersionText, IsRefused) {
    EXPECT_FALSE(ReleaseVersion::parse(GetParam()));
}

struct InOrder {
    const char* older;
    const char* newer;
};

class VersionsInOrder : public testing::TestWithParam<InOrder> {};

INSTANTIATE_TEST_SUITE_P(
    ReleaseVersion, VersionsInOrder,
    testing::Values(
        InOrder{"1.9", "1.10"}, InOrder{"1.2", "1.2.1"}, InOrder{"1.2.0", "1.2.0.1"}, InOrder{"1.99.99", "2"},
        InOrder{"0", "0.0.1"}, InOrder{"0.9", "0.10"}));

TEST_P(VersionsInOrder, AreComparedNumberByNumber) {
    EXPECT_LT(version(GetParam().older), version(GetParam().newer));
    EXPECT_NE(version(GetParam().older), version(GetParam().newer));
}

TEST(ReleaseVersion, EqualsTheSameWithZerosBehind) {
    EXPECT_EQ(version("1.2"), version("1.2.0"));
    EXPECT_FALSE(version("1.2") < version("1.2.0"));
    EXPECT_EQ(version("1"), version("1.0.0.0"));
    EXPECT_EQ(version("0"), ReleaseVersion());
}

TEST(KernelVersion, IsMajorAndMinorOfWhatTheKernelTells) {
    EXPECT_EQ(kernelVersion("6.1.0-18-amd64").value().text(), "6.1");
    EXPECT_EQ(kernelVersion("6.12").value().text(), "6.12");
    EXPECT_EQ(kernelVersion("7.0-rc1").value().text(), "7.0");
    EXPECT_EQ(kernelVersion("6.6.87.2-microsoft-standard-WSL2").value().text(), "6.6");
}

TEST(KernelVersion, IsNoneOfAnotherText) {
    EXPECT_FALSE(kernelVersion(""));
    EXPECT_FALSE(kernelVersion("6"));
    EXPECT_FALSE(kernelVersion("linux-6.1"));
    EXPECT_FALSE(kernelVersion("6.x"));
}

} // namespace
} // namespace tarnwick
