// Where the program's own icons are found.
#include "platform/linux/OwnIcons.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

class OwnIconsTest : public testing::Test {
protected:
    OwnIconsTest() { test::writeFile(icons_ / "hicolor/scalable/apps/org.tarnwick.tarnwick.svg", "<svg/>"); }

    test::TemporaryFolder folder_;
    fs::path program_ = folder_.path() / "bin/tarnwick";
    fs::path icons_ = folder_.path() / "share/tarnwick/icons";
};

} // namespace

TEST_F(OwnIconsTest, TheyAreInstalledBesideTheProgramsFolder) {
    EXPECT_EQ(ownIcons(false, program_), icons_);
}

TEST_F(OwnIconsTest, OtherProgramsCannotReadThemInASandbox) {
    EXPECT_EQ(ownIcons(true, program_), fs::path());
}

TEST_F(OwnIconsTest, ThereAreNoneWhereTheyAreNotInstalled) {
    fs::remove_all(icons_);

    EXPECT_EQ(ownIcons(false, program_), fs::path());
}

TEST_F(OwnIconsTest, ThereAreNoneWhereTheProgramIsUnknown) {
    EXPECT_EQ(ownIcons(false, std::nullopt), fs::path());
}

} // namespace tarnwick
