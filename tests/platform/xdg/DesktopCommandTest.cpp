// Command lines of desktop entries: how a program's place is written, and how one is found.
#include "platform/xdg/DesktopCommand.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Variable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::Optional;

class DesktopCommandTest : public testing::Test {
protected:
    [[nodiscard]] fs::path make(const std::string& name, fs::perms permissions) const {
        const fs::path file = folder_.path() / name;
        test::writeFile(file, "#!/bin/sh\n");
        fs::permissions(file, permissions);
        return file;
    }

    test::TemporaryFolder folder_;
};

} // namespace

TEST_F(DesktopCommandTest, APlainPathIsWrittenAsItIs) {
    EXPECT_EQ(DesktopCommand::starting("/usr/bin/tarnwick-1.0_a+b", "--x"), "/usr/bin/tarnwick-1.0_a+b --x");
}

TEST_F(DesktopCommandTest, AnythingElseIsWrittenInQuotationMarks) {
    EXPECT_EQ(DesktopCommand::starting("/my programs/tarnwick", "--x"), R"("/my programs/tarnwick" --x)");
    EXPECT_EQ(DesktopCommand::starting("/häuschen/a;b", "--x"), R"("/häuschen/a;b" --x)");
}

TEST_F(DesktopCommandTest, WhatMeansSomethingInQuotationMarksIsEscaped) {
    EXPECT_EQ(DesktopCommand::starting(R"(/a$b`c"d\e)", "--x"), R"("/a\$b\`c\"d\\e" --x)");
}

TEST_F(DesktopCommandTest, APercentSignIsDoubledInAnArgumentOfTheShell) {
    EXPECT_EQ(
        DesktopCommand::starting("/100%/tarnwick", "--x"),
        R"(sh -c "exec \"\$0\" \"\$@\"" "/100%%/tarnwick" --x)");
}

TEST_F(DesktopCommandTest, TheProgramOfACommandIsItsFirstWord) {
    EXPECT_THAT(DesktopCommand::program("tarnwick --set PingInterval=5"), Optional(std::string("tarnwick")));
    EXPECT_THAT(DesktopCommand::program("  /usr/bin/tarnwick"), Optional(std::string("/usr/bin/tarnwick")));
    EXPECT_THAT(
        DesktopCommand::program(R"("/my \$\"programs\"/tarnwick" %U)"),
        Optional(std::string(R"(/my $"programs"/tarnwick)")));
}

TEST_F(DesktopCommandTest, ACommandWithoutAWordOrAnEndHasNoProgram) {
    EXPECT_EQ(DesktopCommand::program(""), std::nullopt);
    EXPECT_EQ(DesktopCommand::program("   "), std::nullopt);
    EXPECT_EQ(DesktopCommand::program("\"/usr/bin/tarnwick"), std::nullopt);
    EXPECT_EQ(DesktopCommand::program("\"/usr/bin/tarnwick\\"), std::nullopt);
}

TEST_F(DesktopCommandTest, AProgramIsFoundAtItsPath) {
    const fs::path program = make("program", fs::perms::owner_all);
    EXPECT_THAT(DesktopCommand::find(program), Optional(program));
    EXPECT_EQ(DesktopCommand::find(folder_.path() / "nothing"), std::nullopt);
}

TEST_F(DesktopCommandTest, WhatMayNotBeStartedIsNoProgram) {
    EXPECT_EQ(DesktopCommand::find(make("text", fs::perms::owner_read)), std::nullopt);
    EXPECT_EQ(DesktopCommand::find(folder_.path()), std::nullopt);
    EXPECT_EQ(DesktopCommand::find(""), std::nullopt);
}

TEST_F(DesktopCommandTest, ANameIsLookedForInTheFoldersOfPrograms) {
    const fs::path program = make("second/program", fs::perms::owner_all);
    const std::string folders =
        (folder_.path() / "first").string() + ":" + (folder_.path() / "second").string();
    const test::Variable path("PATH", folders.c_str());

    EXPECT_THAT(DesktopCommand::find("program"), Optional(program));
    EXPECT_EQ(DesktopCommand::find("other"), std::nullopt);
    EXPECT_EQ(DesktopCommand::find("second/program"), std::nullopt);
}

} // namespace tarnwick
