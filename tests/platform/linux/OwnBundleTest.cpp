// Which bundle a program is part of.
#include "platform/linux/OwnBundle.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

} // namespace

TEST(OwnBundleTest, ItIsTheFolderWithTheExtensionAppAboveBin) {
    EXPECT_EQ(ownBundle(fs::path("/opt/Tarnwick.app/bin/tarnwick")), "/opt/Tarnwick.app");
}

TEST(OwnBundleTest, BothProgramsHaveIt) {
    EXPECT_EQ(ownBundle(fs::path("/opt/Tarnwick.app/bin/tarnwick-watch")), "/opt/Tarnwick.app");
}

TEST(OwnBundleTest, ItsNameMayBeAnother) {
    EXPECT_EQ(
        ownBundle(fs::path("/home/zoë/My Programs/Tarnwick 2.app/bin/tarnwick")),
        "/home/zoë/My Programs/Tarnwick 2.app");
}

TEST(OwnBundleTest, TheNearestFolderCounts) {
    EXPECT_EQ(
        ownBundle(fs::path("/opt/Outer.app/bin/Tarnwick.app/bin/tarnwick")),
        "/opt/Outer.app/bin/Tarnwick.app");
}

TEST(OwnBundleTest, AnInstalledProgramHasNone) {
    EXPECT_EQ(ownBundle(fs::path("/usr/bin/tarnwick")), std::nullopt);
}

TEST(OwnBundleTest, AProgramElsewhereInSuchAFolderHasNone) {
    EXPECT_EQ(ownBundle(fs::path("/opt/Tarnwick.app/tarnwick")), std::nullopt);
    EXPECT_EQ(ownBundle(fs::path("/opt/Tarnwick.app/build/bin/tarnwick")), std::nullopt);
    EXPECT_EQ(ownBundle(fs::path("/opt/Other.app/usr/bin/Tarnwick/bin/tarnwick")), std::nullopt);
}

TEST(OwnBundleTest, AProgramInsideAFolderOfAnotherExtensionHasNone) {
    EXPECT_EQ(ownBundle(fs::path("/opt/Tarnwick.apps/bin/tarnwick")), std::nullopt);
    EXPECT_EQ(ownBundle(fs::path("/opt/.app/bin/tarnwick")), std::nullopt);
    EXPECT_EQ(ownBundle(fs::path("/opt/app/bin/tarnwick")), std::nullopt);
}

TEST(OwnBundleTest, AProgramWhosePathIsUnknownHasNone) {
    EXPECT_EQ(ownBundle(std::nullopt), std::nullopt);
}

} // namespace tarnwick
