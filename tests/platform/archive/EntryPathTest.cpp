// Which names and links of an archive stay inside their folder.
#include "platform/archive/EntryPath.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using PathParts = std::vector<std::string>;

TEST(EntryPath, HasTheFoldersAndTheName) {
    EXPECT_EQ(entryParts("a", 10), PathParts({"a"}));
    EXPECT_EQ(entryParts("a/b/c", 10), PathParts({"a", "b", "c"}));
    EXPECT_EQ(entryParts("a/b/", 10), PathParts({"a", "b"}));
    EXPECT_EQ(entryParts("..a/b../...", 20), PathParts({"..a", "b..", "..."}));
}

class UnsafePath : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    EntryPath, UnsafePath,
    testing::Values(
        "", "/", "//", "/a", "/a/b", "..", "../a", "a/..", "a/../b", "a/b/../../..", ".", "./a", "a/.",
        "a/./b", "a//b", "a//", "../", "a/../"));

TEST_P(UnsafePath, IsNone) {
    EXPECT_FALSE(entryParts(GetParam(), 100));
}

TEST(EntryPath, HasABoundedLength) {
    EXPECT_TRUE(entryParts("abc/def", 7));
    EXPECT_FALSE(entryParts("abc/defg", 7));
    EXPECT_FALSE(entryParts("abc/def/", 7));
}

struct LinkCase {
    PathParts link;
    const char* target;
};

class LinkInside : public testing::TestWithParam<LinkCase> {};

INSTANTIATE_TEST_SUITE_P(
    EntryPath, LinkInside,
    testing::Values(
        LinkCase{{"top", "l"}, "a"}, LinkCase{{"top", "l"}, "bin/a"}, LinkCase{{"top", "l"}, "bin/"},
        LinkCase{{"top", "lib", "l"}, "a.so.1"}, LinkCase{{"top", "lib", "l"}, "../a"},
        LinkCase{{"top", "lib", "l"}, "../lib/a"}, LinkCase{{"top", "a", "b", "l"}, "../../c/d"}));

TEST_P(LinkInside, IsLetThrough) {
    EXPECT_TRUE(leadsInside(GetParam().link, GetParam().target, 100));
}

class LinkOutside : public testing::TestWithParam<LinkCase> {};

INSTANTIATE_TEST_SUITE_P(
    EntryPath, LinkOutside,
    testing::Values(
        LinkCase{{"top", "l"}, ""}, LinkCase{{"top", "l"}, "/"}, LinkCase{{"top", "l"}, "/etc/passwd"},
        LinkCase{{"top", "l"}, ".."}, LinkCase{{"top", "l"}, "../"}, LinkCase{{"top", "l"}, "../top/a"},
        LinkCase{{"top", "l"}, "../x"}, LinkCase{{"top", "lib", "l"}, "../../x"},
        LinkCase{{"top", "l"}, "../../x"}, LinkCase{{"top", "l"}, "../../../x"},
        LinkCase{{"top", "lib", "l"}, ".."}, LinkCase{{"top", "lib", "l"}, "../"},
        LinkCase{{"top", "l"}, "."}, LinkCase{{"top"}, "a"}, LinkCase{{"top"}, "../a"},
        // Behind a name that may be a link.
        LinkCase{{"top", "a", "l"}, "b/../../../x"}, LinkCase{{"top", "a", "l"}, "b/.."},
        LinkCase{{"top", "a", "l"}, "../b/../c"}, LinkCase{{"top", "a", "l"}, "..//etc"}));

TEST_P(LinkOutside, IsFound) {
    EXPECT_FALSE(leadsInside(GetParam().link, GetParam().target, 100));
}

TEST(EntryPath, OfALinksTargetHasABoundedLength) {
    EXPECT_TRUE(leadsInside({"top", "l"}, "abcdefg", 7));
    EXPECT_FALSE(leadsInside({"top", "l"}, "abcdefgh", 7));
}

} // namespace
} // namespace tarnwick
