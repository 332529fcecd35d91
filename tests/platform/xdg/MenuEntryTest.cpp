// The program's place in the user's menu of applications, in real files.
#include "platform/xdg/MenuEntry.h"

#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;

constexpr auto model = "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=Tarnwick\n"
                       "Name[de]=Tarnwick\n"
                       "Exec=tarnwick\n"
                       "Icon=org.tarnwick.tarnwick\n"
                       "Actions=settings;\n"
                       "\n"
                       "[Desktop Action settings]\n"
                       "Name=Settings…\n"
                       "Exec=tarnwick --settings\n";

class MenuEntryTest : public testing::Test {
protected:
    MenuEntryTest() { makeBundle(); }

    void makeBundle() const {
        test::writeFile(bundle_ / "share/applications/org.tarnwick.tarnwick.desktop", model);
        test::writeFile(bundle_ / "share/icons/hicolor/scalable/apps/org.tarnwick.tarnwick.svg", "<svg/>");
        test::writeFile(program(), "#!/bin/sh\n");
        fs::permissions(program(), fs::perms::owner_all);
    }

    [[nodiscard]] fs::path program() const { return bundle_ / "bin/tarnwick"; }

    [[nodiscard]] MenuEntry entry() const {
        return MenuEntry(
            {.program = program(),
             .share = bundle_ / "share",
             .userData = user_,
             .systemFolders = {folder_.path() / "local", folder_.path() / "usr"}});
    }

    [[nodiscard]] std::string text() const { return test::contentOf(file_); }

    test::TemporaryFolder folder_;
    fs::path bundle_ = folder_.path() / "Meine Programme/Tarnwick.app";
    fs::path user_ = folder_.path() / "data";
    fs::path file_ = user_ / "applications/org.tarnwick.tarnwick.desktop";
    fs::path icon_ = user_ / "icons/hicolor/scalable/apps/org.tarnwick.tarnwick.svg";
};

} // namespace

TEST_F(MenuEntryTest, AtFirstTheMenuHasNone) {
    EXPECT_FALSE(entry().isInMenu());
    EXPECT_EQ(entry().startedProgram(), std::nullopt);
}

TEST_F(MenuEntryTest, TheEntryStartsTheProgramByItsPathWithEveryAction) {
    ASSERT_EQ(entry().add(), std::nullopt);

    const std::string quoted = '"' + program().string() + '"';
    EXPECT_THAT(text(), HasSubstr("\nExec=" + quoted + "\n"));
    EXPECT_THAT(text(), HasSubstr("\nExec=" + quoted + " --settings\n"));
    EXPECT_THAT(text(), HasSubstr("\nTryExec=" + program().string() + "\n"));
    EXPECT_THAT(text(), HasSubstr("\nName[de]=Tarnwick\n"));
}

TEST_F(MenuEntryTest, TheIconIsACopyThatOutlivesTheBundle) {
    ASSERT_EQ(entry().add(), std::nullopt);

    fs::remove_all(bundle_);

    EXPECT_EQ(test::contentOf(icon_), "<svg/>");
}

TEST_F(MenuEntryTest, OnceAddedItIsInTheMenuAndTellsItsProgram) {
    ASSERT_EQ(entry().add(), std::nullopt);

    EXPECT_TRUE(entry().isInMenu());
    EXPECT_THAT(entry().startedProgram(), Optional(program()));
}

TEST_F(MenuEntryTest, AfterAMoveItIsBroughtUpToDate) {
    ASSERT_EQ(entry().add(), std::nullopt);
    const fs::path former = program();
    bundle_ = folder_.path() / "elsewhere/Tarnwick.app";
    makeBundle();
    EXPECT_THAT(entry().startedProgram(), Optional(former));

    ASSERT_EQ(entry().add(), std::nullopt);

    EXPECT_THAT(entry().startedProgram(), Optional(program()));
    EXPECT_THAT(text(), Not(HasSubstr(former.string())));
}

TEST_F(MenuEntryTest, RemovingTakesEntryAndIconAway) {
    ASSERT_EQ(entry().add(), std::nullopt);

    ASSERT_EQ(entry().remove(), std::nullopt);

    EXPECT_FALSE(entry().isInMenu());
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_FALSE(fs::exists(icon_));
}

TEST_F(MenuEntryTest, AnEntryOfTheUsersOwnStays) {
    test::writeFile(file_, model);
    EXPECT_TRUE(entry().isInMenu());
    EXPECT_EQ(entry().startedProgram(), std::nullopt);

    EXPECT_EQ(entry().remove(), std::nullopt);

    EXPECT_EQ(text(), model);
}

TEST_F(MenuEntryTest, APackagesEntryIsInTheMenuToo) {
    test::writeFile(folder_.path() / "usr/applications/org.tarnwick.tarnwick.desktop", model);

    EXPECT_TRUE(entry().isInMenu());
    EXPECT_EQ(entry().startedProgram(), std::nullopt);
}

TEST_F(MenuEntryTest, AFolderThatCannotBeWrittenIsNamed) {
    test::writeFile(file_, "");
    fs::permissions(user_, fs::perms::owner_read | fs::perms::owner_exec);
    std::optional<std::string> failure;
    {
        const test::Unprivileged ordinary;
        ASSERT_TRUE(ordinary.isOrdinary());
        failure = entry().add();
    }
    fs::permissions(user_, fs::perms::owner_all);

    EXPECT_THAT(failure, Optional(HasSubstr("org.tarnwick.tarnwick")));
}

TEST_F(MenuEntryTest, ABundleWithoutItsEntryIsNamed) {
    fs::remove_all(bundle_ / "share/applications");

    EXPECT_THAT(entry().add(), Optional(HasSubstr((bundle_ / "share/applications").string())));
    EXPECT_FALSE(entry().isInMenu());
}

} // namespace tarnwick
